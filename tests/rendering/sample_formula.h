// Frames, and the bytes that their samples have by the formula written out.
#pragma once

#include <cstdint>
#include <vector>

#include "images/view.h"
#include "support/dice.h"

namespace samples {

using Bytes = std::vector<unsigned char>;

// As large as its pixels: a sanitizer sees any byte read beyond them.
struct Frame {
  int width;
  int height;
  int bytesPerPixel;
  Bytes bytes = Bytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                      static_cast<std::size_t>(bytesPerPixel));

  fisheye_calibration::images::Frame raw() const {
    return {bytes.data(), width, height, bytesPerPixel};
  }

  // Byte c of picture pixel (x, y), rows counted from the top; `outside` beyond the frame.
  int at(int x, int y, int c, int outside) const {
    if (x < 0 || y < 0 || x >= width || y >= height) return outside;
    const std::size_t row = static_cast<std::size_t>(height - 1 - y);
    const std::size_t pixel = row * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    return bytes[pixel * static_cast<std::size_t>(bytesPerPixel) + static_cast<std::size_t>(c)];
  }
};

inline Frame noise(support::Dice& dice, int width, int height, int bytesPerPixel) {
  Frame frame{width, height, bytesPerPixel};
  const bool extremes = dice.oneIn(4);
  for (unsigned char& byte : frame.bytes) {
    byte = static_cast<unsigned char>(extremes ? dice.whole(0, 1) * 255 : dice.whole(0, 255));
  }
  return frame;
}

// The whole part of a position in 1/32 pixels: 16 bits, signed.
inline int wholePart(int position) { return static_cast<std::int16_t>(position >> 5); }

// The four pixels P(x, y) at (u, v) mixed.
template <class P>
int mixed(const P& pixel, int u, int v) {
  const int sx = wholePart(u);
  const int sy = wholePart(v);
  const int a = u & 31;
  const int b = v & 31;
  const int upper = (32 - a) * pixel(sx, sy) + a * pixel(sx + 1, sy);
  const int lower = (32 - a) * pixel(sx, sy + 1) + a * pixel(sx + 1, sy + 1);
  return ((32 - b) * upper + b * lower + 512) / 1024;
}

// The byte that a sample shows: its four pixels mixed; of those that are there, if it begins in the
// last column or row, their mean by weight, of 15 bits, in 32-bit float; 0 if it begins outside.
inline unsigned char shownByte(const Frame& frame, int u, int v, int c) {
  const int sx = wholePart(u);
  const int sy = wholePart(v);
  if (frame.at(sx, sy, c, -1) < 0) return 0;
  if (frame.at(sx + 1, sy + 1, c, -1) >= 0) {
    return static_cast<unsigned char>(
        mixed([&](int x, int y) { return frame.at(x, y, c, 0); }, u, v));
  }
  const int a = u & 31;
  const int b = v & 31;
  const int weights[2][2] = {{(32 - b) * (32 - a) * 32, (32 - b) * a * 32},
                             {b * (32 - a) * 32, b * a * 32}};
  int sum = 0;
  int weight = 0;
  for (int y = 0; y < 2; ++y) {
    for (int x = 0; x < 2; ++x) {
      const int P = frame.at(sx + x, sy + y, c, -1);
      if (P < 0) continue;
      sum += weights[y][x] * P;
      weight += weights[y][x];
    }
  }
  const float scaled = static_cast<float>(sum) * 32768.0F;
  const float mean = scaled / static_cast<float>(weight);
  return static_cast<unsigned char>((static_cast<int>(mean) + 16384) / 32768);
}

// The mask byte: a picture that is 255 outside the frame and 0 in it, cut above 127.
inline unsigned char maskByte(const Frame& frame, int u, int v) {
  const auto outside = [&](int x, int y) { return frame.at(x, y, 0, -1) < 0 ? 255 : 0; };
  return mixed(outside, u, v) > 127 ? 255 : 0;
}

}  // namespace samples
