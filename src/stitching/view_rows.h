// The rows of a doubled view, from wherever they are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "rendering/corrected_view.h"
#include "stitching/doubled_view.h"

namespace fisheye_calibration::stitching {

struct ViewRow {
  const unsigned char* pixels = nullptr;
  const unsigned char* mask = nullptr;
};

// The rows of a view that has been rendered as a whole.
class WholeRows {
 public:
  explicit WholeRows(const DoubledView& view) : view_(view) {}

  cv::Size size() const { return {view_.width, view_.height}; }
  ViewRow bufferRow(std::int32_t row) const {
    return {view_.picture().bufferRow(row), view_.validity().bufferRow(row)};
  }

 private:
  const DoubledView& view_;
};

// Rows that are rendered when they are asked for, for one thread. The latest ones are kept in a
// ring, at most one for each remainder of the row by the ring's length; a row that has left it is
// rendered again.
class RenderedRows {
 public:
  // A null view has no rows. Each row of the ring, whose length is a power of two, takes width x
  // (bytes + 1) bytes.
  RenderedRows(const rendering::CorrectedView* view, int bytes, std::int32_t ring);

  cv::Size size() const { return size_; }
  // Valid until the next call.
  ViewRow bufferRow(std::int32_t row);

 private:
  cv::Size size_;
  std::optional<rendering::CorrectedView::Rows> rows_;
  std::size_t width_;
  std::size_t stride_;
  std::vector<std::int32_t> kept_;  // the row in each place of the ring, or -1
  std::unique_ptr<unsigned char[]> pixels_;
  std::unique_ptr<unsigned char[]> masks_;
};

}  // namespace fisheye_calibration::stitching
