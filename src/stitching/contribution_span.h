// The part of a canvas row to which the second camera can contribute.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace fisheye_calibration::stitching {

struct Span {
  std::int32_t begin = 0;
  std::int32_t end = 0;  // one past the last
};

// A span of the columns 0...width-1 that contains every column c for which
//   (x, y) = M (c, row) with the projective division,
//   -1 < x + 0.5 < size.width, -1 < y + 0.5 < size.height
// holds in double precision, however the single steps are rounded. It may contain other columns,
// too.
Span contributionSpan(const cv::Matx33d& M, double row, std::int32_t width, const cv::Size& size);

}  // namespace fisheye_calibration::stitching
