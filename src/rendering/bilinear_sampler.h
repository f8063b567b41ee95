// Bilinear samples of a raw frame and their validity: byte for byte those of the image library's
// remap, version 4.9, with fixed-point maps and a transparent border, whichever version is
// installed.
#pragma once

#include <cstddef>

#include "images/view.h"

namespace fisheye_calibration::rendering {

// Samples a run at positions (u[k], v[k]), in 1/32 pixel. The integer parts are the low 16 bits,
// signed, of u >> 5 and v >> 5: (sx, sy) is the upper left of the four pixels P00, P01, P10, P11
// that are mixed,
//   (32 - b) ((32 - a) P00 + a P01) + b ((32 - a) P10 + a P11), a = u & 31, b = v & 31,
// divided by 1024 and rounded. If a sample begins in the last column or row, the pixels of that
// column or row replace the missing ones; a sample that begins outside is 0 (compatibility 32).
// Validity is 0 if more than half of the sample's weight lies inside the frame, else 255
// (compatibility 31). kNowhere gives 0 and 255. Reads whole runs of u and v, writes `count` pixels
// and, unless `mask` is null, `count` bytes.
void sampleRun(const images::Frame& frame, const int* u, const int* v, std::size_t count,
               unsigned char* pixels, unsigned char* mask);

}  // namespace fisheye_calibration::rendering
