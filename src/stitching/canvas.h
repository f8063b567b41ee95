// Joins two doubled views on the host's canvas.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

#include "images/view.h"
#include "rendering/corrected_view.h"
#include "stitching/doubled_view.h"
#include "stitching/row_budget.h"

namespace fisheye_calibration::stitching {

// Buffer row of the canvas that holds the first view's buffer row 0. The view is centred, with the
// offset truncated toward zero, and starts below row 0 if it is higher than the canvas.
std::int64_t verticalOffset(std::int32_t canvasHeight, std::int32_t viewHeight);

// Places the first view unscaled at column 0 and the second one according to M, which maps buffer
// pixels of the first view to buffer pixels of the second. All rows are buffer rows (compatibility
// 50). Where both views have content, out = trunc(first t) + trunc(second (1 - t)) in 32-bit float
// (compatibility 52), byte by byte, with t = (seam - c)/(seam - c0): c0 is the row's first such
// column, the seam the first view's last column with content on that row (0 if there is none from
// column 1 on, compatibility 51). If c0 is not left of the seam, the row takes the mean. Pixels
// where neither view has content keep their values (compatibility 53).
//
// Both views must have as many bytes per pixel as the canvas, not 0. Rows are computed in parallel;
// the result does not depend on how they are split.
void compose(const DoubledView& first, const DoubledView& second, const cv::Matx33d& M,
             const images::Target& canvas);

// A doubled view that does not exist as a whole. Without a `view` it has no content.
struct ViewOnDemand {
  std::int32_t height = 0;
  const rendering::CorrectedView* view = nullptr;
};

// The same with views that are rendered row by row, where the canvas shows them; their frames must
// not overlap the canvas. Each thread holds one row of the first view and `budget.ring` rows of the
// second, pixels and mask.
void composeOnDemand(const ViewOnDemand& first, const ViewOnDemand& second, const cv::Matx33d& M,
                     const images::Target& canvas, const RowBudget& budget);

}  // namespace fisheye_calibration::stitching
