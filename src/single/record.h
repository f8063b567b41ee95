// Converts between the camera record and the types of src/lens; no other code does.
#pragma once

#include "fisheye_calibration.h"
#include "lens/camera.h"
#include "lens/rotation.h"

namespace fisheye_calibration::single {

// The camera of the raw image.
inline lens::Camera rawCamera(const FishEyeCalibrationParam& param) {
  return {param.fx, param.fy, param.u0, param.v0, param.k0, param.k1, param.skewness};
}

inline void storeCamera(const lens::Camera& camera, FishEyeCalibrationParam& param) {
  const cv::Matx33d K = lens::cameraMatrix(camera);
  param.fx = static_cast<float>(K(0, 0));
  param.fy = static_cast<float>(K(1, 1));
  param.skewness = static_cast<float>(K(0, 1));
  param.u0 = static_cast<float>(K(0, 2));
  param.v0 = static_cast<float>(K(1, 2));
  param.k0 = camera.k0;
  param.k1 = camera.k1;
}

// The ideal camera of a corrected image whose centre is (cx, cy).
inline lens::Camera correctedCamera(const FishEyeCalibrationParam& param, float cx, float cy) {
  return {param.fx, param.fy, cx, cy, 0, 0, param.skewness};
}

inline cv::Vec3d rotationVector(const FishEyeCalibrationParam& param) {
  return {param.Rx, param.Ry, param.Rz};
}

inline cv::Vec3d translation(const FishEyeCalibrationParam& param) {
  return {param.Tx, param.Ty, param.Tz};
}

// R1...R9 are written for the host and never read (compatibility 25).
inline void storeRotationMatrix(const cv::Matx33d& R, FishEyeCalibrationParam& param) {
  float* const fields[] = {&param.R1, &param.R2, &param.R3, &param.R4, &param.R5,
                           &param.R6, &param.R7, &param.R8, &param.R9};
  for (int i = 0; i < 9; ++i) {
    *fields[i] = static_cast<float>(R.val[i]);
  }
}

inline void storePose(const lens::Pose& pose, FishEyeCalibrationParam& param) {
  param.Rx = static_cast<float>(pose.om[0]);
  param.Ry = static_cast<float>(pose.om[1]);
  param.Rz = static_cast<float>(pose.om[2]);
  param.Tx = static_cast<float>(pose.T[0]);
  param.Ty = static_cast<float>(pose.T[1]);
  param.Tz = static_cast<float>(pose.T[2]);
  storeRotationMatrix(lens::rotationFromVector(rotationVector(param)), param);
}

// p1...p9: the homography from the corrected to the second-corrected image.
inline cv::Matx33d homography(const FishEyeCalibrationParam& param) {
  return {param.p1, param.p2, param.p3, param.p4, param.p5, param.p6, param.p7, param.p8, param.p9};
}

inline void storeHomography(const cv::Matx33d& H, FishEyeCalibrationParam& param) {
  double* const fields[] = {&param.p1, &param.p2, &param.p3, &param.p4, &param.p5,
                            &param.p6, &param.p7, &param.p8, &param.p9};
  for (int i = 0; i < 9; ++i) {
    *fields[i] = H.val[i];
  }
}

}  // namespace fisheye_calibration::single
