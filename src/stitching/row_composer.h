// Fills rows of the canvas from the rows of two views.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <opencv2/core.hpp>
#include <optional>

#include "images/pixel_format.h"
#include "images/view.h"
#include "stitching/blended_run.h"
#include "stitching/contribution_span.h"
#include "stitching/second_positions.h"
#include "stitching/view_rows.h"

namespace fisheye_calibration::stitching {

// Every mask value but 255 means content.
inline bool hasContent(unsigned char mask) { return mask < images::kNoContent; }

// How many of `count` mask bytes, at least one, agree with the first one about content before one
// does not.
std::int32_t alike(const unsigned char* mask, std::int32_t count);

// Where the views lie on the canvas.
struct Layout {
  const cv::Matx33d& M;  // buffer pixels of the first view to those of the second
  images::Target canvas;
  std::int64_t offsetY;  // buffer row of the canvas that holds the first view's buffer row 0
};

// Composes one row at a time, for one thread. Rows is WholeRows or RenderedRows.
template <int kBytes, class Rows>
class RowComposer {
 public:
  RowComposer(const Layout& layout, Rows& first, Rows& second)
      : layout_(layout), first_(first), second_(second), secondSize_(second.size()) {}

  // Buffer row r of the canvas.
  void compose(std::int32_t r) {
    const std::int64_t y1 = r - layout_.offsetY;
    out_ = layout_.canvas.bufferRow(r);
    firstEnd_ = 0;
    ramp_.reset();
    if (first_.size().width > 0 && 0 <= y1 && y1 < first_.size().height) {
      firstRow_ = first_.bufferRow(static_cast<std::int32_t>(y1));
      firstEnd_ = std::min(first_.size().width, layout_.canvas.width);
    }
    const auto row = static_cast<double>(y1);
    const Span span = contributionSpan(layout_.M, row, layout_.canvas.width, secondSize_);
    if (span.begin >= span.end) {
      copyFirst(0, firstEnd_);
      return;
    }
    copyFirst(0, std::min(span.begin, firstEnd_));
    for (std::int32_t c = span.begin; c < span.end;) {
      const std::int32_t count = std::min(span.end - c, kPositionsAtOnce);
      secondPositions(layout_.M, row, c, count, secondSize_, positions_);
      collectSecond(count);
      join(c, count);
      c += count;
    }
    copyFirst(span.end, firstEnd_);
  }

 private:
  static std::size_t offset(std::int32_t pixel) { return static_cast<std::size_t>(pixel) * kBytes; }

  // Columns begin...end - 1 that lie in the first view only.
  void copyFirst(std::int32_t begin, std::int32_t end) {
    for (std::int32_t c = begin; c < end;) {
      const std::int32_t count = alike(firstRow_.mask + c, end - c);
      if (hasContent(firstRow_.mask[c])) {
        std::memcpy(out_ + offset(c), firstRow_.pixels + offset(c), offset(count));
      }
      c += count;
    }
  }

  // Fetches the pixels and mask bytes of the second view that positions_ names, `count` in all.
  // Most canvas columns show neighbours in a row of it, which are copied block by block.
  void collectSecond(std::int32_t count) {
    for (std::int32_t i = 0; i < count; i += kPositionBlock) {
      if (positions_.areNeighbours(i / kPositionBlock)) {
        seek(positions_.at[i]);
        const std::int32_t column = positions_.at[i] - rowBegin_;
        std::memcpy(mask_ + i, secondRow_.mask + column, kPositionBlock);
        std::memcpy(pixels_ + offset(i), secondRow_.pixels + offset(column),
                    offset(kPositionBlock));
      } else {
        const std::int32_t end = std::min(i + kPositionBlock, count);
        for (std::int32_t k = i; k < end; ++k) {
          collectPixel(k);
        }
      }
    }
  }

  void collectPixel(std::int32_t i) {
    mask_[i] = images::kNoContent;
    if (positions_.at[i] >= 0) {
      seek(positions_.at[i]);
      const std::int32_t column = positions_.at[i] - rowBegin_;
      mask_[i] = secondRow_.mask[column];
      std::memcpy(pixels_ + offset(i), secondRow_.pixels + offset(column), kBytes);
    }
  }

  // Makes the row of the second view that holds the position the current one.
  void seek(std::int32_t position) {
    if (position < rowBegin_ || position >= rowEnd_) {
      const std::int32_t row = position / secondSize_.width;
      secondRow_ = second_.bufferRow(row);
      rowBegin_ = row * secondSize_.width;
      rowEnd_ = rowBegin_ + secondSize_.width;
    }
  }

  // Columns c0...c0 + count - 1, whose pixels of the second view have been collected.
  void join(std::int32_t c0, std::int32_t count) {
    for (std::int32_t i = 0; i < count;) {
      const std::int32_t c = c0 + i;
      const bool inSecond = hasContent(mask_[i]);
      bool inFirst = false;
      std::int32_t run = alike(mask_ + i, count - i);
      if (c < firstEnd_) {
        inFirst = hasContent(firstRow_.mask[c]);
        run = alike(firstRow_.mask + c, std::min(run, firstEnd_ - c));
      }
      if (inFirst && inSecond) {
        blend(c, run, pixels_ + offset(i));
      } else if (inFirst || inSecond) {
        const unsigned char* const from =
            inFirst ? firstRow_.pixels + offset(c) : pixels_ + offset(i);
        std::memcpy(out_ + offset(c), from, offset(run));
      }
      i += run;
    }
  }

  // The row's first overlapping column begins the ramp.
  void blend(std::int32_t column, std::int32_t count, const unsigned char* second) {
    if (!ramp_) {
      const std::int32_t seam = seamOfFirst();
      ramp_ = {seam, seam - column};
    }
    blendRun(*ramp_, column, count, kBytes, firstRow_.pixels + offset(column), second,
             out_ + offset(column));
  }

  // The rightmost column with content; 0 if there is none. Column 0 is never tested (compatibility
  // 51).
  std::int32_t seamOfFirst() const {
    std::int32_t column = first_.size().width - 1;
    while (column > 0 && !hasContent(firstRow_.mask[column])) {
      --column;
    }
    return column;
  }

  Layout layout_;
  Rows& first_;
  Rows& second_;
  cv::Size secondSize_;

  // The canvas row, and the row of the first view that lies on its columns 0...firstEnd_ - 1.
  unsigned char* out_ = nullptr;
  ViewRow firstRow_;
  std::int32_t firstEnd_ = 0;
  std::optional<Ramp> ramp_;

  // The current row of the second view, with the positions rowBegin_...rowEnd_ - 1.
  ViewRow secondRow_;
  std::int32_t rowBegin_ = 0;
  std::int32_t rowEnd_ = 0;

  SecondPositions positions_;
  unsigned char mask_[kPositionsAtOnce];
  unsigned char pixels_[kPositionsAtOnce * kBytes];
};

}  // namespace fisheye_calibration::stitching
