#include "rendering/one_sample.h"

#include <cstring>

#include "images/pixel_format.h"
#include "rendering/run.h"

namespace fisheye_calibration::rendering {
namespace {

// Where the sample begins and how far it reaches into the next column and row.
struct Position {
  int sx, sy;  // whole parts: the low 16 bits, signed
  int a, b;    // fractions, 1/32 pixels
  bool nowhere;

  Position(int u, int v)
      : sx(static_cast<std::int16_t>(static_cast<std::uint32_t>(u) >> 5)),
        sy(static_cast<std::int16_t>(static_cast<std::uint32_t>(v) >> 5)),
        a(u & 31),
        b(v & 31),
        nowhere(u == rendering::kNowhere && v == rendering::kNowhere) {}
};

bool beginsIn(const images::Frame& frame, const Position& at) {
  return !at.nowhere && at.sx >= 0 && at.sy >= 0 && at.sx < frame.width && at.sy < frame.height;
}

bool endsIn(const images::Frame& frame, const Position& at) {
  return at.sx < frame.width - 1 && at.sy < frame.height - 1;
}

}  // namespace

bool beginsOnBorder(const images::Frame& frame, int u, int v) {
  const Position at(u, v);
  return beginsIn(frame, at) && !endsIn(frame, at);
}

// The mean of the pixels that are there, by weight and rounded, halves up. The image library takes
// it in 32-bit float for samples that lack pixels, which gives the same byte for every sum and
// weight.
void sampleOne(const images::Frame& frame, int u, int v, unsigned char* pixel) {
  const auto bytes = static_cast<std::size_t>(frame.bytes);
  const Position at(u, v);
  if (!beginsIn(frame, at)) {
    std::memset(pixel, 0, bytes);
    return;
  }
  const std::size_t stride = static_cast<std::size_t>(frame.width) * bytes;
  // Picture row sy is buffer row height - 1 - sy; the picture row below it precedes it. Pixels that
  // are missing have no weight, and P00 stands for them.
  const bool hasRight = at.sx < frame.width - 1;
  const bool hasBelow = at.sy < frame.height - 1;
  const unsigned char* const P00 = frame.pixels +
                                   static_cast<std::size_t>(frame.height - 1 - at.sy) * stride +
                                   static_cast<std::size_t>(at.sx) * bytes;
  const unsigned char* const P01 = hasRight ? P00 + bytes : P00;
  const unsigned char* const P10 = hasBelow ? P00 - stride : P00;
  const unsigned char* const P11 = hasRight && hasBelow ? P10 + bytes : P00;
  const int left = 32 - at.a;
  const int right = hasRight ? at.a : 0;
  const int above = 32 - at.b;
  const int below = hasBelow ? at.b : 0;
  const int weight = (left + right) * (above + below);
  for (std::size_t c = 0; c < bytes; ++c) {
    const int sum =
        above * (left * P00[c] + right * P01[c]) + below * (left * P10[c] + right * P11[c]);
    pixel[c] = static_cast<unsigned char>((2 * sum + weight) / (2 * weight));
  }
}

// The weight outside, of 1024, decides as the interpolation of a mask of 255 outside and 0 inside
// does, thresholded at 127.
unsigned char validityOfOne(const images::Frame& frame, int u, int v) {
  const Position at(u, v);
  if (at.nowhere) {
    return images::kNoContent;
  }
  const auto insideX = [&](int x) { return x >= 0 && x < frame.width; };
  const auto insideY = [&](int y) { return y >= 0 && y < frame.height; };
  const int weightX = (insideX(at.sx) ? 32 - at.a : 0) + (insideX(at.sx + 1) ? at.a : 0);
  const int weightY = (insideY(at.sy) ? 32 - at.b : 0) + (insideY(at.sy + 1) ? at.b : 0);
  const int outside = 1024 - weightX * weightY;
  return (255 * outside + 512) >> 10 > 127 ? images::kNoContent : 0;
}

}  // namespace fisheye_calibration::rendering
