#include "detection/chessboard_check.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace fisheye_calibration::program {
namespace {

constexpr double kIntoSquare = 0.4;    // of the step to the next corner, where a square is sampled
constexpr double kPatchRadius = 0.08;  // of the step
constexpr double kSmallestContrast = 4;  // grey levels
constexpr double kSmallestGap = 0.25;    // of the contrast, between the darkest bright and the
                                         // brightest dark square at a corner
constexpr double kLargestFailure = 0.5;  // of the corners in one row or column
constexpr double kContinuation = 0.7;    // of the positions in a row beyond the rim

// The corners with one more row and column on every side, extrapolated by parabolas.
class ContinuedGrid {
 public:
  ContinuedGrid(const std::vector<cv::Point2f>& corners, int columns, int rows)
      : corners_(corners), columns_(columns), rows_(rows) {}

  cv::Point2d at(int c, int r) const {
    if (c < 0) {
      return continued(at(0, r), at(1, r), at(2, r));
    }
    if (c >= columns_) {
      return continued(at(columns_ - 1, r), at(columns_ - 2, r), at(columns_ - 3, r));
    }
    if (r < 0) {
      return continued(at(c, 0), at(c, 1), at(c, 2));
    }
    if (r >= rows_) {
      return continued(at(c, rows_ - 1), at(c, rows_ - 2), at(c, rows_ - 3));
    }
    return cv::Point2d(corners_[static_cast<std::size_t>(r * columns_ + c)]);
  }

 private:
  static cv::Point2d continued(cv::Point2d p, cv::Point2d q, cv::Point2d s) {
    return 3 * p - 3 * q + s;
  }

  const std::vector<cv::Point2f>& corners_;
  int columns_;
  int rows_;
};

// Mean grey around a position; the outermost pixels continue beyond the picture.
double greyAround(const cv::Mat& grey, cv::Point2d position, int radius) {
  const int x = static_cast<int>(std::lround(std::clamp(position.x, -1e6, 1e6)));
  const int y = static_cast<int>(std::lround(std::clamp(position.y, -1e6, 1e6)));
  double sum = 0;
  for (int dy = -radius; dy <= radius; ++dy) {
    for (int dx = -radius; dx <= radius; ++dx) {
      sum += grey.at<unsigned char>(std::clamp(y + dy, 0, grey.rows - 1),
                                    std::clamp(x + dx, 0, grey.cols - 1));
    }
  }
  return sum / ((2 * radius + 1) * (2 * radius + 1));
}

// +1 or -1, depending on which diagonal is bright; 0 if the squares around do not alternate.
int cornerSense(const cv::Mat& grey, const ContinuedGrid& grid, int c, int r) {
  const cv::Point2d corner = grid.at(c, r);
  std::array<double, 4> square{};
  constexpr int kSides[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
  for (std::size_t i = 0; i < 4; ++i) {
    const cv::Point2d along = kSides[i][0] * (grid.at(c + 1, r) - grid.at(c - 1, r)) / 2;
    const cv::Point2d down = kSides[i][1] * (grid.at(c, r + 1) - grid.at(c, r - 1)) / 2;
    const double step = std::min(cv::norm(along), cv::norm(down));
    const int radius = std::clamp(static_cast<int>(kPatchRadius * step), 0, 12);
    square[i] = greyAround(grey, corner + kIntoSquare * (along + down), radius);
  }
  const double difference = (square[0] + square[2] - square[1] - square[3]) / 2;
  const double contrast = std::abs(difference);
  const std::size_t bright = difference > 0 ? 0 : 1;
  const double gap = std::min(square[bright], square[bright + 2]) -
                     std::max(square[1 - bright], square[(1 - bright) + 2]);
  if (contrast < kSmallestContrast || gap < kSmallestGap * contrast) {
    return 0;
  }
  return difference > 0 ? 1 : -1;
}

// The share of the corners in one line that alternate as they should if `sense` is that of the
// grid's first corner.
template <typename CornerAt>
double alternatingShare(const cv::Mat& grey, const ContinuedGrid& grid, int count, int sense,
                        CornerAt cornerAt) {
  int right = 0;
  for (int i = 0; i < count; ++i) {
    const cv::Point corner = cornerAt(i);
    const int expected = (corner.x + corner.y) % 2 == 0 ? sense : -sense;
    if (cornerSense(grey, grid, corner.x, corner.y) == expected) {
      ++right;
    }
  }
  return static_cast<double>(right) / count;
}

}  // namespace

bool looksLikeChessboard(const cv::Mat& grey, const std::vector<cv::Point2f>& corners, int columns,
                         int rows) {
  const ContinuedGrid grid(corners, columns, rows);
  int vote = 0;
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < columns; ++c) {
      vote += ((c + r) % 2 == 0 ? 1 : -1) * cornerSense(grey, grid, c, r);
    }
  }
  const int sense = vote > 0 ? 1 : -1;
  const auto row = [&](int r) {
    return alternatingShare(grey, grid, columns, sense, [r](int i) { return cv::Point(i, r); });
  };
  const auto column = [&](int c) {
    return alternatingShare(grey, grid, rows, sense, [c](int i) { return cv::Point(c, i); });
  };
  for (int r = 0; r < rows; ++r) {
    if (row(r) < 1 - kLargestFailure) {
      return false;
    }
  }
  for (int c = 0; c < columns; ++c) {
    if (column(c) < 1 - kLargestFailure) {
      return false;
    }
  }
  return row(-1) < kContinuation && row(rows) < kContinuation && column(-1) < kContinuation &&
         column(columns) < kContinuation;
}

}  // namespace fisheye_calibration::program
