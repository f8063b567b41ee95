// One bilinear sample of a raw frame: the rule that blocks of samples follow and, at the frame's
// border, use.
#pragma once

#include "images/view.h"

namespace fisheye_calibration::rendering {

// Writes the pixel at position (u, v), in 1/32 pixel (see bilinear-inl.h); 0 if nothing is sampled.
void sampleOne(const images::Frame& frame, int u, int v, unsigned char* pixel);

// The validity of that sample: 0 if more than half of its weight lies inside the frame, else 255.
unsigned char validityOfOne(const images::Frame& frame, int u, int v);

}  // namespace fisheye_calibration::rendering
