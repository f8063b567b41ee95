// Where on a row of the canvas the second camera can contribute.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace fisheye_calibration::stitching {

struct Span {
  std::int32_t begin = 0;
  std::int32_t end = 0;  // one past the last
};

// Columns of 0...width-1 outside which no column c is taken into the second view by
//   (x, y) = M (c, row) with the projective division,
//   -1 < x + 0.5 < size.width, -1 < y + 0.5 < size.height
// in double precision, whatever the rounding of the single steps does. Inside there may be columns
// that are not taken either.
Span contributionSpan(const cv::Matx33d& M, double row, std::int32_t width, const cv::Size& size);

}  // namespace fisheye_calibration::stitching
