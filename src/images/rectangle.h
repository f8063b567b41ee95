// Copying rectangles between host buffers.
#pragma once

#include <cstdint>

#include "images/view.h"

namespace fisheye_calibration::images {

// Copies pixel (x0 + i, y0 + j) of `from` (column, buffer row) to pixel (i, j) of `to` wherever the
// former exists; all other pixels of `to` keep their values. Copies nothing if pixels have 0 bytes,
// a buffer is null or a size is not positive. Both views must have the same bytes per pixel. `from`
// and `to` may be the same buffer if a rectangle within it moves to its start.
void copyRectangle(const Frame& from, std::int64_t x0, std::int64_t y0, const Target& to);

}  // namespace fisheye_calibration::images
