#include "stitching/canvas.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "images/pixel_format.h"
#include "platform/parallel_rows.h"
#include "stitching/contribution_span.h"
#include "stitching/second_positions.h"

namespace fisheye_calibration::stitching {
namespace {

// Every mask value but 255 means content.
bool hasContent(unsigned char mask) { return mask < images::kNoContent; }

// The rightmost column with content in each buffer row of the view; 0 if there is none. Column 0 is
// never tested (compatibility 51).
std::vector<std::int32_t> seamOf(const DoubledView& view) {
  const std::int32_t rows = view.width > 0 ? std::max(view.height, 0) : 0;
  std::vector<std::int32_t> seam(static_cast<std::size_t>(rows), 0);
  for (std::size_t y = 0; y < seam.size(); ++y) {
    const unsigned char* const mask = view.validity().bufferRow(static_cast<std::int64_t>(y));
    std::int32_t column = view.width - 1;
    while (column > 0 && !hasContent(mask[column])) {
      --column;
    }
    seam[y] = column;
  }
  return seam;
}

// Blends a row. The first camera's weight falls from 1 at the row's first overlapping column to 0
// at the seam.
class Ramp {
 public:
  explicit Ramp(std::int32_t seam) : seam_(seam) {}

  template <int Bytes>
  void blend(std::int32_t column, const unsigned char* first, const unsigned char* second,
             unsigned char* out) {
    if (!started_) {
      started_ = true;
      length_ = seam_ - column;
    }
    if (length_ > 0) {
      const float t = static_cast<float>(seam_ - column) / static_cast<float>(length_);
      for (int i = 0; i < Bytes; ++i) {
        const float a = static_cast<float>(first[i]) * t;
        const float b = static_cast<float>(second[i]) * (1.0F - t);
        // Both products are truncated before the addition (compatibility 52).
        out[i] = static_cast<unsigned char>(static_cast<int>(a) + static_cast<int>(b));
      }
    } else {
      for (int i = 0; i < Bytes; ++i) {
        out[i] = static_cast<unsigned char>((first[i] + second[i]) / 2);
      }
    }
  }

 private:
  std::int32_t seam_;
  std::int32_t length_ = 0;
  bool started_ = false;
};

// A row of the canvas and the row of the first view that lies on it, if any.
struct Row {
  unsigned char* pixels;
  double y1;                  // buffer row of the first view; may be outside it
  std::int32_t firstEnd = 0;  // columns 0...firstEnd - 1 lie in the first view
  const unsigned char* firstPixels = nullptr;
  const unsigned char* firstMask = nullptr;
  std::int32_t seam = 0;
};

template <int Bytes>
void copyFirst(const Row& row, std::int32_t begin, std::int32_t end) {
  for (std::int32_t c = begin; c < end;) {
    const unsigned char* const from = row.firstMask + c;
    const unsigned char* const last = row.firstMask + end;
    if (!hasContent(*from)) {
      c += static_cast<std::int32_t>(std::find_if(from, last, hasContent) - from);
      continue;
    }
    const auto count = static_cast<std::size_t>(std::find(from, last, images::kNoContent) - from);
    const std::size_t offset = static_cast<std::size_t>(c) * Bytes;
    std::memcpy(row.pixels + offset, row.firstPixels + offset, count * Bytes);
    c += static_cast<std::int32_t>(count);
  }
}

template <int Bytes>
void copyOrBlend(const Row& row, const Span& span, const DoubledView& second,
                 const cv::Matx33d& M) {
  std::int32_t positions[kPositionsAtOnce];
  const cv::Size size(second.width, second.height);
  Ramp ramp(row.seam);
  for (std::int32_t c0 = span.begin; c0 < span.end;) {
    const int count = std::min(span.end - c0, kPositionsAtOnce);
    secondPositions(M, row.y1, c0, count, size, positions);
    for (int i = 0; i < count; ++i) {
      const std::int32_t c = c0 + i;
      const std::size_t offset = static_cast<std::size_t>(c) * Bytes;
      const bool inFirst = c < row.firstEnd && hasContent(row.firstMask[c]);
      const std::int32_t position = positions[i];
      if (position >= 0 && hasContent(second.mask[static_cast<std::size_t>(position)])) {
        const unsigned char* const from =
            second.pixels.get() + static_cast<std::size_t>(position) * Bytes;
        if (inFirst) {
          ramp.blend<Bytes>(c, row.firstPixels + offset, from, row.pixels + offset);
        } else {
          std::memcpy(row.pixels + offset, from, Bytes);
        }
      } else if (inFirst) {
        std::memcpy(row.pixels + offset, row.firstPixels + offset, Bytes);
      }
    }
    c0 += count;
  }
}

template <int Bytes>
void composeRows(const DoubledView& first, const DoubledView& second, const cv::Matx33d& M,
                 const images::Target& canvas) {
  const std::vector<std::int32_t> seam = seamOf(first);
  const std::int64_t offsetY = verticalOffset(canvas.height, first.height);
  const auto composeRow = [&](int r) {
    const std::int64_t y1 = r - offsetY;
    Row row{canvas.bufferRow(r), static_cast<double>(y1)};
    if (first.width > 0 && 0 <= y1 && y1 < first.height) {
      row.firstEnd = std::min(first.width, canvas.width);
      row.firstPixels = first.picture().bufferRow(y1);
      row.firstMask = first.validity().bufferRow(y1);
      row.seam = seam[static_cast<std::size_t>(y1)];
    }
    const Span span =
        contributionSpan(M, row.y1, canvas.width, cv::Size(second.width, second.height));
    if (span.begin >= span.end) {
      copyFirst<Bytes>(row, 0, row.firstEnd);
      return;
    }
    copyFirst<Bytes>(row, 0, std::min(span.begin, row.firstEnd));
    copyOrBlend<Bytes>(row, span, second, M);
    copyFirst<Bytes>(row, span.end, row.firstEnd);
  };
  platform::forRowRanges(canvas.height, [&](int begin, int end) {
    for (int r = begin; r < end; ++r) {
      composeRow(r);
    }
  });
}

}  // namespace

std::int64_t verticalOffset(std::int32_t canvasHeight, std::int32_t viewHeight) {
  return (std::int64_t{canvasHeight} - viewHeight) / 2;
}

void compose(const DoubledView& first, const DoubledView& second, const cv::Matx33d& M,
             const images::Target& canvas) {
  if (canvas.width <= 0 || canvas.height <= 0) {
    return;
  }
  switch (canvas.bytes) {
    case 1:
      composeRows<1>(first, second, M, canvas);
      break;
    case 3:
      composeRows<3>(first, second, M, canvas);
      break;
    case 4:
      composeRows<4>(first, second, M, canvas);
      break;
    default:
      break;
  }
}

}  // namespace fisheye_calibration::stitching
