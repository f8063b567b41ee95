#include "stitching/contribution_span.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "stitching/saturation.h"

namespace fisheye_calibration::stitching {
namespace {

// f(c) = slope c + constant. `margin` bounds the error of any value computed for f on the span,
// whatever the order of operations.
struct Linear {
  double slope;
  double constant;
  double margin;
};

// Row i of M plus k times its last row, as a function of the column. Each product and sum has an
// error of at most 2^-53 of the terms' magnitudes; a dozen of them stay far below 2^-45.
Linear combined(const cv::Matx33d& M, int i, double k, double row, std::int32_t width) {
  const double magnitude = (std::abs(M(i, 0)) + std::abs(k * M(2, 0))) * width +
                           (std::abs(M(i, 1)) + std::abs(k * M(2, 1))) * std::abs(row) +
                           (std::abs(M(i, 2)) + std::abs(k * M(2, 2)));
  return {M(i, 0) + k * M(2, 0), (M(i, 1) + k * M(2, 1)) * row + (M(i, 2) + k * M(2, 2)),
          magnitude * 0x1p-45 + std::numeric_limits<double>::min()};
}

Linear negated(const Linear& f) { return {-f.slope, -f.constant, f.margin}; }

// Removes columns where f is certainly not positive. Keeping one or two columns more at either end
// outweighs the rounding of the quotient, which is below 2^31 wherever it matters.
void keepPositive(const Linear& f, Span& span) {
  const double highest = f.constant + f.margin;
  if (f.slope == 0) {
    if (highest <= 0) {
      span.end = span.begin;
    }
    return;
  }
  const double zero = std::clamp(-highest / f.slope, -0x1p32, 0x1p32);
  if (f.slope > 0) {
    span.begin = saturated(std::max<std::int64_t>(span.begin, truncated(std::floor(zero)) - 1));
  } else {
    span.end = saturated(std::min<std::int64_t>(span.end, truncated(std::ceil(zero)) + 2));
  }
}

}  // namespace

// With x = u/w and w > 0, the conditions x + 0.5 > -1 and x + 0.5 < W are u + 1.5 w > 0 and
// (W - 0.5) w - u > 0. Rounding is monotonic, so this holds for the computed values too. A negative
// w flips all signs; if w changes its sign on the row (the camera looks along the bed), the whole
// row is kept.
Span contributionSpan(const cv::Matx33d& M, double row, std::int32_t width, const cv::Size& size) {
  if (size.empty()) {
    return {};
  }
  Span span{0, std::max(width, 0)};
  const Linear w = combined(M, 2, 0, row, span.end);
  const double atBegin = w.constant;
  const double atEnd = w.slope * span.end + w.constant;
  const bool positive = atBegin > w.margin && atEnd > w.margin;
  const bool negative = atBegin < -w.margin && atEnd < -w.margin;
  if (!positive && !negative) {
    return span;
  }
  const int lengths[] = {size.width, size.height};
  for (int i = 0; i < 2; ++i) {
    const Linear low = combined(M, i, 1.5, row, width);
    const Linear high = negated(combined(M, i, 0.5 - lengths[i], row, width));
    if (!std::isfinite(low.margin) || !std::isfinite(high.margin)) {
      return {0, std::max(width, 0)};
    }
    keepPositive(positive ? low : negated(low), span);
    keepPositive(positive ? high : negated(high), span);
    if (span.begin >= span.end) {
      return {};
    }
  }
  return span;
}

}  // namespace fisheye_calibration::stitching
