// A non-owning view of a pixel buffer.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fisheye_calibration::images {

// Rows are stored bottom-up without padding. Byte is unsigned char, const if the buffer is only
// read.
template <class Byte>
struct View {
  Byte* pixels = nullptr;
  std::int32_t width = 0;
  std::int32_t height = 0;
  int bytes = 0;  // per pixel: 1, 3 or 4; 0 for a bit count that is not supported

  std::size_t stride() const {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(bytes);
  }
  std::size_t size() const { return stride() * static_cast<std::size_t>(height); }

  // Rows in memory order, counted from the bottom of the picture.
  Byte* bufferRow(std::int64_t row) const {
    return pixels + static_cast<std::size_t>(row) * stride();
  }
  // Rows as seen, counted from the top.
  Byte* pictureRow(std::int64_t y) const { return bufferRow(height - 1 - y); }
};

using Frame = View<const unsigned char>;  // read
using Target = View<unsigned char>;       // written

}  // namespace fisheye_calibration::images
