// The map of the error on the bed, with contours and scale in millimetres.
#pragma once

#include <opencv2/core/types.hpp>
#include <string>
#include <utility>
#include <vector>

#include "drawing/accuracy_map.h"

namespace fisheye_calibration::program {

std::string bedMapFigure(const AccuracyMap& map);

// The lines along which the errors of the grid are `level`, by linear interpolation along the edges
// of its cells (marching squares), as pairs of ends on the bed.
std::vector<std::pair<cv::Point2d, cv::Point2d>> contourAt(const AccuracyMap& map, double level);

}  // namespace fisheye_calibration::program
