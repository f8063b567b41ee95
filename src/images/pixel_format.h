// What all image buffers of the interface have in common.
#pragma once

namespace fisheye_calibration::images {

// 0 where the interface has no pixels of so many bits.
constexpr int bytesPerPixel(int bitCount) {
  return bitCount == 8 || bitCount == 24 || bitCount == 32 ? bitCount / 8 : 0;
}

// Mask byte of a pixel that shows nothing of the frame; 0 where it does.
constexpr unsigned char kNoContent = 255;

}  // namespace fisheye_calibration::images
