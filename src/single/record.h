// The one place where a camera record becomes the camera model's inputs.
#pragma once

#include "fisheye/camera.h"
#include "fisheye/rotation.h"
#include "fisheye_calibration.h"

namespace single {

// The raw image's camera.
inline fisheye::Camera rawCamera(const FishEyeCalibrationParam& param) {
  return {param.fx, param.fy, param.u0, param.v0, param.k0, param.k1, param.skewness};
}

// The ideal camera of a corrected image whose centre is (cx, cy).
inline fisheye::Camera correctedCamera(const FishEyeCalibrationParam& param, float cx, float cy) {
  return {param.fx, param.fy, cx, cy, 0, 0, param.skewness};
}

inline cv::Vec3d rotationVector(const FishEyeCalibrationParam& param) {
  return {param.Rx, param.Ry, param.Rz};
}

inline cv::Vec3d translation(const FishEyeCalibrationParam& param) {
  return {param.Tx, param.Ty, param.Tz};
}

}  // namespace single
