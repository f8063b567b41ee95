#include "rendering/corrected_view.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "images/pixel_format.h"
#include "platform/parallel_rows.h"
#include "rendering/bilinear_sampler.h"
#include "rendering/run.h"

namespace fisheye_calibration::rendering {
namespace {

// Columns spread evenly over the width.
void spreadColumns(int width, int* columns) {
  for (std::size_t k = 0; k < kRun; ++k) {
    columns[k] = static_cast<int>((2 * k + 1) * static_cast<std::size_t>(width) / (2 * kRun));
  }
}

}  // namespace

struct CorrectedView::Run {
  alignas(64) int column[kRun];
  alignas(64) int row[kRun];
  alignas(64) int u[kRun];
  alignas(64) int v[kRun];
};

CorrectedView::CorrectedView(const images::Frame& frame, const lens::Camera& camera,
                             const cv::Matx33d& K, const InverseWarp& warp)
    : frame_(frame),
      size_(warp.size),
      positions_(rectifyingRays(camera, cv::Matx33d::eye(), K, warp.size), warp.size),
      warp_(warp) {}

// A few samples usually suffice.
bool CorrectedView::showsAnything() const {
  ExactPositions exact(positions_.rays(), size_.width);
  int columns[kRun];
  spreadColumns(size_.width, columns);
  for (const int row : {3, 1, 5, 0, 2, 4, 6}) {
    if (showsAnythingIn(static_cast<int>((2 * row + 1) * std::int64_t{size_.height} / 14), columns,
                        exact)) {
      return true;
    }
  }
  return !isFrameBlack() && showsAnythingAnywhere(exact);
}

void CorrectedView::render(const images::Target& view, unsigned char* mask) const {
  platform::forRowRanges(size_.height, [&](int begin, int end) {
    Rows rows(*this);
    const images::Target maskView{mask, view.width, view.height, 1};
    for (int y = begin; y < end; ++y) {
      rows.render(y, view.pictureRow(y), mask != nullptr ? maskView.pictureRow(y) : nullptr);
    }
  });
}

CorrectedView::Rows::Rows(const CorrectedView& view)
    : view_(view), exact_(view.positions_.rays(), view.size_.width) {}

void CorrectedView::Rows::render(int y, unsigned char* pixels, unsigned char* mask) {
  view_.renderRow(y, exact_, pixels, mask);
}

void CorrectedView::renderRow(int y, ExactPositions& exact, unsigned char* pixels,
                              unsigned char* mask) const {
  const auto bytes = static_cast<std::size_t>(frame_.bytes);
  Run run;
  for (int r = 0; r < runsOfRow(); ++r) {
    const int x = r * static_cast<int>(kRun);
    const auto first = static_cast<std::size_t>(x);
    const std::size_t count = std::min(kRun, static_cast<std::size_t>(size_.width) - first);
    unsigned char* const runMask = mask != nullptr ? mask + first : nullptr;
    if (sourcePixelsOfRun(warp_, x, y, run.column, run.row)) {
      positionsOfRun(positions_, exact, run.column, run.row, count, run.u, run.v);
      sampleRun(frame_, run.u, run.v, count, pixels + first * bytes, runMask);
    } else {
      std::memset(pixels + first * bytes, 0, count * bytes);
      if (runMask != nullptr) {
        std::memset(runMask, images::kNoContent, count);
      }
    }
  }
}

// A count, because the column after the last run may not fit 32 bits.
int CorrectedView::runsOfRow() const { return (size_.width - 1) / static_cast<int>(kRun) + 1; }

// Checks kRun undistorted pixels of one row; negative columns are skipped.
bool CorrectedView::showsAnythingIn(int row, const int* columns, ExactPositions& exact) const {
  Run run;
  std::copy_n(columns, kRun, run.column);
  std::fill_n(run.row, kRun, row);
  positionsOfRun(positions_, exact, run.column, run.row, kRun, run.u, run.v);
  unsigned char pixels[kRun * 4];
  sampleRun(frame_, run.u, run.v, kRun, pixels, nullptr);
  const unsigned char* const end = pixels + kRun * static_cast<std::size_t>(frame_.bytes);
  return std::any_of(static_cast<const unsigned char*>(pixels), end,
                     [](unsigned char byte) { return byte != 0; });
}

bool CorrectedView::isFrameBlack() const {
  return frame_.pixels[0] == 0 &&
         std::memcmp(frame_.pixels, frame_.pixels + 1, frame_.size() - 1) == 0;
}

bool CorrectedView::showsAnythingAnywhere(ExactPositions& exact) const {
  for (int row = 0; row < size_.height; ++row) {
    for (int r = 0; r < runsOfRow(); ++r) {
      int columns[kRun];
      for (std::size_t k = 0; k < kRun; ++k) {
        const std::size_t column = static_cast<std::size_t>(r) * kRun + k;
        columns[k] = column < static_cast<std::size_t>(size_.width) ? static_cast<int>(column) : -1;
      }
      if (showsAnythingIn(row, columns, exact)) {
        return true;
      }
    }
  }
  return false;
}

}  // namespace fisheye_calibration::rendering
