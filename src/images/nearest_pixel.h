// Rounds positions of a warp to whole source pixels.
#pragma once

namespace fisheye_calibration::images {

// The pixel nearest to a position along an axis of `length` pixels: trunc(position + 0.5), so
// -1.5 < position <= -0.5 still gives 0 (compatibility 40). Returns -1 if there is none or the
// position is NaN.
inline int nearestPixel(float position, int length) {
  const double shifted = static_cast<double>(position) + 0.5;
  return shifted > -1 && shifted < length ? static_cast<int>(shifted) : -1;
}

}  // namespace fisheye_calibration::images
