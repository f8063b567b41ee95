#include "detection/grid_completion.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace fisheye_calibration::program {
namespace {

constexpr int kUnknowns = 6;  // 1, u, v, u^2, u v, v^2
constexpr double kSmallestCondition = 1e-9;

}  // namespace

std::optional<ExpectedCorner> expectedByNeighbours(
    const std::vector<std::optional<cv::Point2d>>& positions, int columns, int rows, int column,
    int row) {
  // Beyond the rim the nearest three lines are used.
  const int centreColumn = std::clamp(column, 0, columns - 1);
  const int centreRow = std::clamp(row, 0, rows - 1);
  cv::Matx<double, kUnknowns, kUnknowns> normal;
  cv::Matx<double, kUnknowns, 2> right;
  int count = 0;
  for (int r = std::max(0, centreRow - kNeighbourReach);
       r <= std::min(rows - 1, centreRow + kNeighbourReach); ++r) {
    for (int c = std::max(0, centreColumn - kNeighbourReach);
         c <= std::min(columns - 1, centreColumn + kNeighbourReach); ++c) {
      const auto& position = positions[static_cast<std::size_t>(r * columns + c)];
      if (!position || (c == column && r == row)) {
        continue;
      }
      const double u = c - column;
      const double v = r - row;
      const cv::Matx<double, kUnknowns, 1> terms(1, u, v, u * u, u * v, v * v);
      normal += terms * terms.t();
      right += terms * cv::Matx12d(position->x, position->y);
      ++count;
    }
  }
  if (count < kUnknowns) {
    return std::nullopt;
  }
  cv::Matx<double, kUnknowns, kUnknowns> inverse;
  if (cv::invert(normal, inverse, cv::DECOMP_SVD) < kSmallestCondition) {
    return std::nullopt;  // the known positions lie in two lines
  }
  const auto fit = inverse * right;
  return ExpectedCorner{.position = {fit(0, 0), fit(0, 1)},
                        .uncertainty = std::sqrt(1 + inverse(0, 0))};
}

std::vector<cv::Point2f> completedGrid(std::vector<std::optional<cv::Point2d>> positions,
                                       int columns, int rows) {
  bool complete = false;
  for (bool progress = true; progress && !complete;) {
    const auto known = positions;
    progress = false;
    complete = true;
    for (int i = 0; i < columns * rows; ++i) {
      auto& position = positions[static_cast<std::size_t>(i)];
      if (position) {
        continue;
      }
      const auto expected = expectedByNeighbours(known, columns, rows, i % columns, i / columns);
      if (expected) {
        position = expected->position;
      }
      progress = progress || expected.has_value();
      complete = complete && expected.has_value();
    }
  }
  std::vector<cv::Point2f> corners;
  if (complete) {
    for (const auto& position : positions) {
      corners.emplace_back(*position);
    }
  }
  return corners;
}

}  // namespace fisheye_calibration::program
