// The file of target points: PointId,Xw,Yw,ImagePtX,ImagePtY.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// The points in the order of the lines. Columns are found by name; other columns are ignored. Fails
// as bad input, naming file, line and column.
std::vector<CalibrationPoint> parsePoints(const std::string& name, std::string_view text);

std::vector<CalibrationPoint> readPoints(const std::filesystem::path& path);

std::string formatPoints(const std::vector<CalibrationPoint>& points);

// The points with their reprojections and residuals: measured - reprojected, pixels. LeftOut is 1
// for the points at the positions `leftOut`, 0 for all others.
std::string formatResiduals(const std::vector<CalibrationPoint>& points,
                            const std::vector<std::size_t>& leftOut = {});

}  // namespace fisheye_calibration::program
