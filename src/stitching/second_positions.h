// The positions of canvas pixels in the second view. The loop over the canvas spends its time here,
// so it works on whole vectors; every instruction set gives the same numbers.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace fisheye_calibration::stitching {

// Columns come in blocks, at most kBlocksAtOnce per call.
constexpr int kPositionBlock = 16;
constexpr int kBlocksAtOnce = 32;
constexpr int kPositionsAtOnce = kPositionBlock * kBlocksAtOnce;

// The column c has, in double precision and in this order of operations,
//   w = m20 c + m21 row + m22
//   x = trunc((m00 c + m01 row + m02)/w + 0.5)
//   y = trunc((m10 c + m11 row + m12)/w + 0.5)
// and the position y width + x, or -1 if (x, y) is outside the view or NaN.
struct SecondPositions {
  alignas(64) std::int32_t at[kPositionsAtOnce];
  // Bit b: the columns of block b show kPositionBlock neighbours in a row of the view. Only the
  // first one's position is set.
  std::uint32_t neighbours;

  bool areNeighbours(int block) const { return (neighbours >> block & 1) != 0; }
};

// Of the columns column...column + count - 1. The view must have 1...2^31 - 1 pixels.
void secondPositions(const cv::Matx33d& M, double row, std::int32_t column, int count,
                     const cv::Size& size, SecondPositions& positions);

}  // namespace fisheye_calibration::stitching
