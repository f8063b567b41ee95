// Rectangles between host buffers.
#pragma once

#include <cstdint>

#include "images/view.h"

namespace fisheye_calibration::images {

// Copies to pixel (i, j) of `to` pixel (x0 + i, y0 + j) of `from`, columns and buffer rows,
// wherever the latter exists; the other pixels of `to` keep their value. Pixels of 0 bytes, null
// pixels and sizes that are not positive copy nothing. Both views have the same bytes a pixel.
// `from` and `to` may be one buffer when a rectangle inside it moves to its start.
void copyRectangle(const Frame& from, std::int64_t x0, std::int64_t y0, const Target& to);

}  // namespace fisheye_calibration::images
