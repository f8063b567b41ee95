// A record in which nothing is impossible.
#pragma once

#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// A camera of 960 x 720 px that looks straight down on the bed from 170 units above it.
inline FishEyeCalibrationParam sampleRecord() {
  FishEyeCalibrationParam param{};
  param.u0 = 482;
  param.v0 = 355;
  param.fx = param.fy = 300;
  param.k0 = 0.01;
  param.k1 = -0.05;
  param.R1 = param.R5 = param.R9 = 1;
  param.Tx = -120;
  param.Ty = -90;
  param.Tz = 170;
  param.p1 = param.p5 = param.p9 = 1;
  param.Pixel = 170.0f / 300.0f;
  param.DatumPtXw = 120;
  param.DatumPtYw = 90;
  return param;
}

}  // namespace fisheye_calibration::program
