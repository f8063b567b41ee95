// The positions of canvas pixels in the second view. The loop over the canvas spends its time here,
// so it works on whole vectors; every instruction set gives the same numbers.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace fisheye_calibration::stitching {

// The maximum number of columns per call.
constexpr int kPositionsAtOnce = 512;

// For the columns c = column...column + count - 1, in double precision and in this order of
// operations:
//   w = m20 c + m21 row + m22
//   x = trunc((m00 c + m01 row + m02)/w + 0.5)
//   y = trunc((m10 c + m11 row + m12)/w + 0.5)
//   positions[c - column] = y size.width + x, or -1 if (x, y) is outside the view or NaN
// The view must have 1...2^31 - 1 pixels. All kPositionsAtOnce elements of `positions` may be
// written.
void secondPositions(const cv::Matx33d& M, double row, std::int32_t column, int count,
                     const cv::Size& size, std::int32_t* positions);

}  // namespace fisheye_calibration::stitching
