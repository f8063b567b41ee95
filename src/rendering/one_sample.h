// One bilinear sample of a raw frame: the rule that runs of samples follow, and what they use at
// the frame's border.
#pragma once

#include "images/view.h"

namespace fisheye_calibration::rendering {

// Writes the pixel at position (u, v), 1/32 pixels, see sampleRun; 0 where nothing is sampled.
void sampleOne(const images::Frame& frame, int u, int v, unsigned char* pixel);

// The validity of that sample: 0 where more than half of its weight lies inside the frame, else
// 255.
unsigned char validityOfOne(const images::Frame& frame, int u, int v);

// Whether a sample begins in the frame's last column or row, where some of its four pixels are
// missing.
bool beginsOnBorder(const images::Frame& frame, int u, int v);

}  // namespace fisheye_calibration::rendering
