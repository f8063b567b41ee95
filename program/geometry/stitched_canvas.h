// The library's stitching on the program's buffers.
#pragma once

#include "base/frame_buffer.h"
#include "base/size.h"
#include "fisheye_calibration.h"
#include "geometry/stitch_pair.h"

namespace fisheye_calibration::program {

// A part of the canvas; rows are counted from the top.
struct Crop {
  int left = 0;
  int top = 0;
  Size size;
};

// A black canvas of the size that the pair's stitched picture has.
FrameBuffer newCanvas(StitchPair& pair);

// Fills the canvas and returns its record.
DualFishEyeCalibrationParam stitchOnto(FrameBuffer& canvas, StitchPair& pair);

// Adds black rows below the picture.
void addRowsBelow(FrameBuffer& canvas, int rows);

// Returns the part of the canvas and turns `dual` into its record.
FrameBuffer cutOut(FrameBuffer& canvas, const Crop& crop, DualFishEyeCalibrationParam& dual);

}  // namespace fisheye_calibration::program
