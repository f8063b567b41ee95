// The blend of the two views where they overlap, on whole vectors; every instruction set gives the
// same bytes.
#pragma once

#include <cstdint>

namespace fisheye_calibration::stitching {

// The first view's weight falls from 1 at the row's first overlapping column to 0 at the seam.
struct Ramp {
  std::int32_t seam;    // column
  std::int32_t length;  // from the first overlapping column to the seam
};

// Blends `count` pixels of `bytes` bytes, 1, 3 or 4, from `column` on, byte by byte in 32-bit
// float:
//   out = trunc(first t) + trunc(second (1 - t)),  t = (seam - column)/length
// Both products are truncated before the addition (compatibility 52). A ramp without length takes
// trunc((first + second)/2). No column is right of the seam or left of the ramp's beginning, unless
// the ramp has no length.
void blendRun(const Ramp& ramp, std::int32_t column, std::int32_t count, int bytes,
              const unsigned char* first, const unsigned char* second, unsigned char* out);

}  // namespace fisheye_calibration::stitching
