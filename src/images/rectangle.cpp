#include "images/rectangle.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace fisheye_calibration::images {
namespace {

// Positions first...last - 1 along one axis of the destination that have a source position.
struct Range {
  std::int64_t first;
  std::int64_t last;

  bool empty() const { return first >= last; }
};

Range overlap(std::int64_t offset, std::int32_t fromLength, std::int32_t toLength) {
  // Beyond these offsets nothing overlaps; within them the sums below cannot overflow.
  if (offset >= fromLength || offset <= -static_cast<std::int64_t>(toLength)) {
    return {0, 0};
  }
  return {std::max<std::int64_t>(0, -offset),
          std::min<std::int64_t>(toLength, fromLength - offset)};
}

template <class Byte>
Byte* pixelAt(const View<Byte>& view, std::int64_t x, std::int64_t row) {
  return view.bufferRow(row) + static_cast<std::size_t>(x) * static_cast<std::size_t>(view.bytes);
}

}  // namespace

void copyRectangle(const Frame& from, std::int64_t x0, std::int64_t y0, const Target& to) {
  if (from.bytes == 0 || from.pixels == nullptr || to.pixels == nullptr) {
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
  const std::size_t length =
      static_cast<std::size_t>(columns.last - columns.first) * static_cast<std::size_t>(from.bytes);
  for (std::int64_t j = rows.first; j < rows.last; ++j) {
    std::memmove(pixelAt(to, columns.first, j), pixelAt(from, x0 + columns.first, y0 + j), length);
  }
}

}  // namespace fisheye_calibration::images
