// Two cameras that look straight down on one bed, with their exact records.
#pragma once

#include "base/frame_buffer.h"
#include "fisheye_calibration.h"
#include "geometry/stitch_pair.h"
#include "program/support/sample_record.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {

// A camera that looks straight down on (Xw, 130) from 170 above, at 240 x 180 px.
inline SyntheticCamera cameraOver(double Xw) {
  return {.width = 240,
          .height = 180,
          .focalLength = 85,
          .principalPoint = {120, 90},
          .R = {1, 0, 0, 0, 1, 0, 0, 0, 1},
          .T = {-Xw, -130, 170}};
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
inline const SyntheticTarget kBoard = {.columns = 14, .rows = 6, .spacing = 50};

inline StitchCamera stitchCamera(double Xw) {
  return {.cameraName = "c.ini",
          .pointsName = "p.csv",
          .frame = blankBuffer({240, 180}, 8),
          .param = recordOver(Xw),
          .points = exactPoints(cameraOver(Xw), kBoard)};
}

// Cameras over Xw = 160 and 260, whose views overlap.
inline StitchPair overheadPair() { return {stitchCamera(160), stitchCamera(260)}; }

}  // namespace fisheye_calibration::program
