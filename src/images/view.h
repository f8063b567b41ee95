// A non-owning view of a pixel buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace fisheye_calibration::images {

// Rows are stored bottom-up, without padding unless `step` says otherwise. Byte is unsigned char,
// const if the buffer is only read.
template <class Byte>
struct View {
  Byte* pixels = nullptr;  // of the picture's bottom row
  std::int32_t width = 0;
  std::int32_t height = 0;
  int bytes = 0;            // per pixel: 1, 3 or 4; 0 for a bit count that is not supported
  std::ptrdiff_t step = 0;  // bytes from a row to the one above, negative if that precedes it in
                            // memory; 0: rows without padding

  std::size_t rowBytes() const {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(bytes);
  }
  std::ptrdiff_t stride() const {
    return step != 0 ? step : static_cast<std::ptrdiff_t>(rowBytes());
  }

  // From the first byte of the pixels in memory to the last one, including what lies between rows;
  // empty unless all sizes are positive.
  std::span<Byte> memory() const {
    if (width <= 0 || height <= 0 || bytes <= 0) {
      return {};
    }
    const auto rows = static_cast<std::size_t>(height - 1);
    const auto distance = static_cast<std::size_t>(stride() < 0 ? -stride() : stride());
    return {stride() < 0 ? bufferRow(height - 1) : pixels, rows * distance + rowBytes()};
  }

  // Rows from the bottom of the picture, which is their order in memory unless `step` is negative.
  Byte* bufferRow(std::int64_t row) const {
    return pixels + static_cast<std::ptrdiff_t>(row) * stride();
  }
  // Rows as seen, counted from the top.
  Byte* pictureRow(std::int64_t y) const { return bufferRow(height - 1 - y); }
};

using Frame = View<const unsigned char>;  // read
using Target = View<unsigned char>;       // written

}  // namespace fisheye_calibration::images
