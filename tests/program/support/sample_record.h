// A record in which nothing is impossible.
#pragma once

#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// A camera of 960 x 720 px that looks straight down on the bed from 170 units above it.
inline FishEyeCalibrationParam sampleRecord() {
  return {.u0 = 482,
          .v0 = 355,
          .fx = 300,
          .fy = 300,
          .k0 = 0.01,
          .k1 = -0.05,
          .R1 = 1,
          .R5 = 1,
          .R9 = 1,
          .Tx = -120,
          .Ty = -90,
          .Tz = 170,
          .p1 = 1,
          .p5 = 1,
          .p9 = 1,
          .Pixel = 170.0f / 300.0f,
          .DatumPtXw = 120,
          .DatumPtYw = 90};
}

}  // namespace fisheye_calibration::program
