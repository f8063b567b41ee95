// Two cameras that look straight down on one bed, with their exact records.
#pragma once

#include "fisheye_calibration.h"
#include "program/support/sample_record.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {

// A camera that looks straight down on (Xw, 130) from 170 above, at 240 x 180 px.
inline SyntheticCamera cameraOver(double Xw) {
  SyntheticCamera camera;
  camera.width = 240;
  camera.height = 180;
  camera.focalLength = 85;
  camera.principalPoint = {120, 90};
  camera.R = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  camera.T = {-Xw, -130, 170};
  return camera;
}

// Its exact record: 2 world units a pixel.
inline FishEyeCalibrationParam recordOver(double Xw) {
  FishEyeCalibrationParam param = sampleRecord();
  param.u0 = 120;
  param.v0 = 90;
  param.fx = param.fy = 85;
  param.Tx = static_cast<float>(-Xw);
  param.Ty = -130;
  param.Pixel = 2;
  param.DatumPtXw = static_cast<float>(Xw);
  param.DatumPtYw = 130;
  return param;
}

// Points at a spacing of 50 from the world's origin; 14 x 6 of them.
inline const SyntheticTarget kBoard = {Pattern::kChessboard, 14, 6, 50, true};

}  // namespace fisheye_calibration::program
