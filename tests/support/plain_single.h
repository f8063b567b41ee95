// The single-camera calibration and the point mappings derived a second time, on the plain solver.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "fisheye_calibration.h"

namespace plain {

// Pixel of a world point in the raw image, in double.
cv::Point2d worldToRaw(const cv::Point3f& world, const FishEyeCalibrationParam& param);

// Pixel of a world point in the corrected image with centre (cx, cy), in double.
cv::Point2d worldToCorrected(const cv::Point3f& world, const FishEyeCalibrationParam& param,
                             float cx, float cy);

// World plane to second-corrected image and back, in 32-bit float.
cv::Point2f worldToSecondCorrected(const cv::Point2f& world, const FishEyeCalibrationParam& param,
                                   float cx, float cy);
cv::Point2f secondCorrectedToWorld(const cv::Point2f& pixel, const FishEyeCalibrationParam& param,
                                   float cx, float cy);

// The calibration of one camera from one view. At least nine points; k2...k5 are drawn from
// std::rand().
bool singleCamCalibration(const cv::Size& imageSize, std::vector<CalibrationPoint>& points,
                          const cv::Size& correctedSize, FishEyeCalibrationParam& param,
                          double& reprojectionError);

}  // namespace plain
