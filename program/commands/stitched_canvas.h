// The library's stitching, on buffers of this program.
#pragma once

#include "base/frame_buffer.h"
#include "base/size.h"
#include "fisheye_calibration.h"
#include "geometry/stitch_pair.h"

namespace fisheye_calibration::program {

// A part of the canvas, by its picture's left column and top row.
struct Crop {
  int left = 0;
  int top = 0;
  Size size;
};

// A black canvas of the size that the pair needs.
FrameBuffer newCanvas(StitchPair& pair);

// Returns the canvas's record.
DualFishEyeCalibrationParam stitchOnto(FrameBuffer& canvas, StitchPair& pair);

// Returns the part and makes `dual` its record.
FrameBuffer cutOut(FrameBuffer& canvas, const Crop& crop, DualFishEyeCalibrationParam& dual);

}  // namespace fisheye_calibration::program
