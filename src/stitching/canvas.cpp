#include "stitching/canvas.h"

#include <algorithm>
#include <memory>
#include <type_traits>

#include "platform/parallel_rows.h"
#include "stitching/row_composer.h"
#include "stitching/view_rows.h"

namespace fisheye_calibration::stitching {
namespace {

// Calls compose(bytes) with the canvas's bytes per pixel as a constant, if it has pixels.
template <class Compose>
void withBytesOf(const images::Target& canvas, const Compose& compose) {
  if (canvas.width <= 0 || canvas.height <= 0) {
    return;
  }
  switch (canvas.bytes) {
    case 1:
      compose(std::integral_constant<int, 1>());
      break;
    case 3:
      compose(std::integral_constant<int, 3>());
      break;
    case 4:
      compose(std::integral_constant<int, 4>());
      break;
    default:
      break;
  }
}

// What a thread renders the rows of both views with.
struct RenderedViews {
  RenderedViews(const ViewOnDemand& firstView, const ViewOnDemand& secondView, int bytes,
                const RowBudget& budget)
      : first(firstView.view, bytes, 1), second(secondView.view, bytes, budget.ring) {}

  RenderedRows first;
  RenderedRows second;
};

template <int kBytes, class Rows>
void composeRows(const Layout& layout, Rows& first, Rows& second, std::int32_t begin,
                 std::int32_t end) {
  RowComposer<kBytes, Rows> composer(layout, first, second);
  for (std::int32_t r = begin; r < end; ++r) {
    composer.compose(r);
  }
}

}  // namespace

std::int64_t verticalOffset(std::int32_t canvasHeight, std::int32_t viewHeight) {
  return (std::int64_t{canvasHeight} - viewHeight) / 2;
}

void compose(const DoubledView& first, const DoubledView& second, const cv::Matx33d& M,
             const images::Target& canvas) {
  const Layout layout{M, canvas, verticalOffset(canvas.height, first.height)};
  withBytesOf(canvas, [&](auto bytes) {
    platform::forRowRanges(canvas.height, [&](int begin, int end) {
      WholeRows firstRows(first);
      WholeRows secondRows(second);
      composeRows<bytes()>(layout, firstRows, secondRows, begin, end);
    });
  });
}

void composeOnDemand(const ViewOnDemand& first, const ViewOnDemand& second, const cv::Matx33d& M,
                     const images::Target& canvas, const RowBudget& budget) {
  const Layout layout{M, canvas, verticalOffset(canvas.height, first.height)};
  withBytesOf(canvas, [&](auto bytes) {
    const std::int32_t ranges = (canvas.height - 1) / budget.rangeRows + 1;
    platform::ThreadTools<RenderedViews> tools(
        ranges, [&] { return std::make_unique<RenderedViews>(first, second, bytes(), budget); });
    platform::forRowRanges(ranges, [&](int begin, int end) {
      const std::int64_t endRow = std::int64_t{end} * budget.rangeRows;
      tools.lend([&](RenderedViews& views) {
        composeRows<bytes()>(
            layout, views.first, views.second, begin * budget.rangeRows,
            static_cast<std::int32_t>(std::min<std::int64_t>(endRow, canvas.height)));
      });
    });
  });
}

}  // namespace fisheye_calibration::stitching
