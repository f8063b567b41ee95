#include "rendering/one_sample.h"

#include <cstring>

#include "images/pixel_format.h"

namespace fisheye_calibration::rendering {
namespace {

// Where the sample begins and how far it reaches into the next column and row.
struct Position {
  int sx, sy;  // integer parts: the low 16 bits, signed (compatibility 39)
  int a, b;    // fractions, 1/32 pixels

  Position(int u, int v)
      : sx(static_cast<std::int16_t>(static_cast<std::uint32_t>(u) >> 5)),
        sy(static_cast<std::int16_t>(static_cast<std::uint32_t>(v) >> 5)),
        a(u & 31),
        b(v & 31) {}
};

bool beginsIn(const images::Frame& frame, const Position& at) {
  return at.sx >= 0 && at.sy >= 0 && at.sx < frame.width && at.sy < frame.height;
}

}  // namespace

// The last column and row are repeated outwards (compatibility 32), which gives the same bytes as
// the image library's weighted mean of the existing pixels: in the last column both weights have
// the factor 32 - a, which cancels and leaves ((32 - b) P00 + b P10)/32. The last row is symmetric.
void sampleOne(const images::Frame& frame, int u, int v, unsigned char* pixel) {
  const auto bytes = static_cast<std::size_t>(frame.bytes);
  const Position at(u, v);
  if (!beginsIn(frame, at)) {
    std::memset(pixel, 0, bytes);
    return;
  }
  const std::size_t right = at.sx < frame.width - 1 ? bytes : 0;
  const std::ptrdiff_t below = at.sy < frame.height - 1 ? frame.stride() : 0;
  const unsigned char* const P00 =
      frame.pictureRow(at.sy) + static_cast<std::size_t>(at.sx) * bytes;
  const unsigned char* const P10 = P00 - below;
  for (std::size_t c = 0; c < bytes; ++c) {
    const int top = (32 - at.a) * P00[c] + at.a * P00[c + right];
    const int bottom = (32 - at.a) * P10[c] + at.a * P10[c + right];
    pixel[c] = static_cast<unsigned char>(((32 - at.b) * top + at.b * bottom + 512) >> 10);
  }
}

// Interpolates a mask of 255 outside and 0 inside, with weights out of 1024, and thresholds it at
// 127 (compatibility 31).
unsigned char validityOfOne(const images::Frame& frame, int u, int v) {
  const Position at(u, v);
  if (at.sx >= 0 && at.sy >= 0 && at.sx < frame.width - 1 && at.sy < frame.height - 1) {
    return 0;
  }
  const auto insideX = [&](int x) { return x >= 0 && x < frame.width; };
  const auto insideY = [&](int y) { return y >= 0 && y < frame.height; };
  const int weightX = (insideX(at.sx) ? 32 - at.a : 0) + (insideX(at.sx + 1) ? at.a : 0);
  const int weightY = (insideY(at.sy) ? 32 - at.b : 0) + (insideY(at.sy + 1) ? at.b : 0);
  const int outside = 1024 - weightX * weightY;
  return (255 * outside + 512) >> 10 > 127 ? images::kNoContent : 0;
}

}  // namespace fisheye_calibration::rendering
