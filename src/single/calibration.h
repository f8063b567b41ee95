// Calibration of one camera from one view.
#pragma once

#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

#include "fisheye_calibration.h"
#include "single/completed_record.h"

namespace fisheye_calibration::single {

constexpr std::size_t kFewestPoints = 9;

// As SingleCamCalibration with at least kFewestPoints points.
bool calibrate(const cv::Size& imageSize, std::vector<CalibrationPoint>& points,
               const cv::Size& correctedSize, Filler filler, FishEyeCalibrationParam& param,
               double& reprojectionError);

// SingleCamCalibration with its message for fewer points.
bool calibrateOrShowMessage(const cv::Size& imageSize, std::vector<CalibrationPoint>& points,
                            const cv::Size& correctedSize, Filler filler,
                            FishEyeCalibrationParam& param, double& reprojectionError);

}  // namespace fisheye_calibration::single
