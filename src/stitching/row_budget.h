// Whether, and how, the rows of the doubled views are rendered where the canvas needs them.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <optional>

#include "stitching/contribution_span.h"

namespace fisheye_calibration::stitching {

// Bounds memory and repeated work; any numbers give the same bytes.
struct RowBudget {
  std::int32_t ring;       // rows of the second view that a thread keeps, a power of two
  std::int32_t rangeRows;  // rows of the canvas that a thread takes at once
};

// The number of a view's buffer rows that the columns of a canvas row show, at most: a pixel (c,
// row) shows the view's pixel M (c, row), rounded. A whole view has `height` rows. If the
// denominator changes its sign within the columns, all of them may be shown.
std::int32_t rowsShown(const cv::Matx33d& M, double row, const Span& columns, std::int32_t height);

// std::nullopt if a row of the canvas shows too many rows of the second view to keep them, or if
// threads would render too many of them twice. M maps buffer pixels of the first view, whose row 0
// lies `offsetY` rows above that of the canvas, to those of the second view.
std::optional<RowBudget> rowBudget(const cv::Matx33d& M, const cv::Size& second,
                                   const cv::Size& canvas, std::int64_t offsetY, int threads);

}  // namespace fisheye_calibration::stitching
