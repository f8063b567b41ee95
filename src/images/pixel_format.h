// Bit counts and mask values that all image buffers of the interface share.
#pragma once

namespace fisheye_calibration::images {

// 0 for a bit count that the interface does not support.
constexpr int bytesPerPixel(int bitCount) {
  return bitCount == 8 || bitCount == 24 || bitCount == 32 ? bitCount / 8 : 0;
}

// Mask byte of a pixel that shows no part of the frame; all other pixels have 0.
constexpr unsigned char kNoContent = 255;

}  // namespace fisheye_calibration::images
