// A buffer of pixels that the host owns.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fisheye_calibration::images {

// Rows run bottom-up and follow each other without padding. Byte is unsigned char, const where the
// buffer is only read.
template <class Byte>
struct View {
  Byte* pixels = nullptr;
  std::int32_t width = 0;
  std::int32_t height = 0;
  int bytes = 0;  // a pixel: 1, 3 or 4; 0 for a bit count that is not supported

  std::size_t stride() const {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(bytes);
  }
  std::size_t size() const { return stride() * static_cast<std::size_t>(height); }

  // Rows counted in memory, from the bottom of the picture.
  Byte* bufferRow(std::int64_t row) const {
    return pixels + static_cast<std::size_t>(row) * stride();
  }
  // Rows counted as they are seen, from the top.
  Byte* pictureRow(std::int64_t y) const { return bufferRow(height - 1 - y); }
};

using Frame = View<const unsigned char>;  // what is read
using Target = View<unsigned char>;       // what is written

}  // namespace fisheye_calibration::images
