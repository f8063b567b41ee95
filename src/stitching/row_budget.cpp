#include "stitching/row_budget.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace fisheye_calibration::stitching {
namespace {

constexpr std::int32_t kLongestRing = 256;  // 2.6 MB for frames of 1280 pixels with 24 bits
constexpr std::int32_t kShortestRange = 16;
constexpr std::int32_t kRangesOfAThread = 8;

}  // namespace

// While the denominator keeps its sign, the row shown rises or falls all the way. The numbers of a
// closed interval are truncated to at most two integers more than it is long; one more is for the
// rounding of its ends.
std::int32_t rowsShown(const cv::Matx33d& M, double row, const Span& columns, std::int32_t height) {
  if (columns.begin >= columns.end) {
    return 0;
  }
  const double ends[2] = {static_cast<double>(columns.begin), static_cast<double>(columns.end - 1)};
  double w[2];
  double y[2];
  for (int i = 0; i < 2; ++i) {
    w[i] = M(2, 0) * ends[i] + M(2, 1) * row + M(2, 2);
    const double v = M(1, 0) * ends[i] + M(1, 1) * row + M(1, 2);
    y[i] = std::clamp(v / w[i], -1.0, static_cast<double>(height));
  }
  const bool sameSign = (w[0] > 0 && w[1] > 0) || (w[0] < 0 && w[1] < 0);
  const double length = std::abs(y[1] - y[0]);
  if (!sameSign || !(length + 3 < height)) {  // NaN, too
    return height;
  }
  return static_cast<std::int32_t>(length) + 3;
}

// A range renders its own copy of the rows of the second view that it shares with its neighbour, as
// many as a row of the canvas shows. Ranges of twice as many rows render at most half the view
// again.
std::optional<RowBudget> rowBudget(const cv::Matx33d& M, const cv::Size& second,
                                   const cv::Size& canvas, std::int64_t offsetY, int threads) {
  std::int32_t shown = 0;
  const std::int32_t rows = canvas.width > 0 ? canvas.height : 0;
  for (std::int32_t r = 0; r < rows && shown <= kLongestRing; ++r) {
    const auto y1 = static_cast<double>(r - offsetY);
    const Span columns = contributionSpan(M, y1, canvas.width, second);
    shown = std::max(shown, rowsShown(M, y1, columns, second.height));
  }
  if (shown > kLongestRing) {
    return std::nullopt;
  }
  const std::int32_t fewest = std::max(kShortestRange, 2 * shown);
  if (threads > 1 && canvas.height / fewest < threads) {
    return std::nullopt;
  }
  const auto ring = static_cast<std::uint32_t>(std::max(shown, 1));
  return RowBudget{static_cast<std::int32_t>(std::bit_ceil(ring)),
                   std::max(fewest, canvas.height / kRangesOfAThread / std::max(threads, 1))};
}

}  // namespace fisheye_calibration::stitching
