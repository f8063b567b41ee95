// Rectangles between host buffers.
#pragma once

#include <cstdint>

#include "fisheye_calibration.h"

namespace single {

// A host buffer's pixels: rows from the start of the buffer, without padding.
template <class Byte>
struct Buffer {
  Byte* pixels;
  ImageLong width;
  ImageLong height;
};

// Copies to pixel (i, j) of `to` pixel (x0 + i, y0 + j) of `from`, columns and buffer rows,
// wherever the latter exists; the other pixels of `to` keep their value. Bit counts other than 8,
// 24 and 32, null pixels and sizes that are not positive copy nothing. `from` and `to` may be one
// buffer when a rectangle inside it moves to its start.
void copyRectangle(const Buffer<const unsigned char>& from, int bitCount, std::int64_t x0,
                   std::int64_t y0, const Buffer<unsigned char>& to);

}  // namespace single
