#include "single/buffer_rectangle.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "single/pixel_format.h"

namespace single {
namespace {

// Positions first...last - 1 along one axis of the destination that have a source.
struct Range {
  std::int64_t first;
  std::int64_t last;

  bool empty() const { return first >= last; }
};

Range overlap(std::int64_t offset, ImageLong fromLength, ImageLong toLength) {
  // Beyond these offsets nothing overlaps; inside them the sums below cannot overflow.
  if (offset >= fromLength || offset <= -static_cast<std::int64_t>(toLength)) {
    return {0, 0};
  }
  return {std::max<std::int64_t>(0, -offset),
          std::min<std::int64_t>(toLength, fromLength - offset)};
}

template <class Byte>
Byte* pixelAt(const Buffer<Byte>& buffer, std::int64_t x, std::int64_t y, std::size_t bytes) {
  return buffer.pixels + static_cast<std::size_t>(y * buffer.width + x) * bytes;
}

}  // namespace

void copyRectangle(const Buffer<const unsigned char>& from, int bitCount, std::int64_t x0,
                   std::int64_t y0, const Buffer<unsigned char>& to) {
  const auto bytes = static_cast<std::size_t>(bytesPerPixel(bitCount));
  if (bytes == 0 || from.pixels == nullptr || to.pixels == nullptr) {
    return;
  }
  if (from.width <= 0 || from.height <= 0 || to.width <= 0 || to.height <= 0) {
    return;
  }
  const Range columns = overlap(x0, from.width, to.width);
  const Range rows = overlap(y0, from.height, to.height);
  if (columns.empty()) {
    return;
  }
  const std::size_t length = static_cast<std::size_t>(columns.last - columns.first) * bytes;
  for (std::int64_t j = rows.first; j < rows.last; ++j) {
    std::memmove(pixelAt(to, columns.first, j, bytes),
                 pixelAt(from, x0 + columns.first, y0 + j, bytes), length);
  }
}

}  // namespace single
