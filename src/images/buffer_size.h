// The sizes of image buffers, and the largest one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>

namespace fisheye_calibration::images {

// Bytes of a buffer of width x height pixels without row padding, 0 for a negative width, height or
// bit count. Throws std::bad_alloc if it has more than 2^31 - 1 pixels or bytes, the limit of the
// interface, in which bitmaps and offsets are counted with 32 bits.
inline std::size_t bufferSize(std::int64_t width, std::int64_t height, std::int64_t bitCount) {
  constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
  if (width <= 0 || height <= 0 || bitCount <= 0) {
    return 0;
  }
  if (width > kLargest / height || bitCount > std::numeric_limits<std::int64_t>::max() / kLargest ||
      width * height * bitCount / 8 > kLargest) {
    throw std::bad_alloc();
  }
  return static_cast<std::size_t>(width * height * bitCount / 8);
}

}  // namespace fisheye_calibration::images
