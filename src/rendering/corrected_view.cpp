#include "rendering/corrected_view.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "platform/parallel_rows.h"
#include "rendering/one_sample.h"

namespace fisheye_calibration::rendering {
namespace {

constexpr std::int64_t kSpread = 64;  // samples across the undistorted image
constexpr int kScanned = 2048;        // columns that are scanned at once

bool isAnythingIn(const unsigned char* bytes, std::size_t count) {
  return std::any_of(bytes, bytes + count, [](unsigned char byte) { return byte != 0; });
}

}  // namespace

CorrectedView::CorrectedView(const images::Frame& frame, const lens::Camera& camera,
                             const cv::Matx33d& K, const InverseWarp& warp)
    : frame_(frame), geometry_(rectifyingRays(camera, cv::Matx33d::eye(), K, warp.size), warp) {}

// A few samples usually suffice.
bool CorrectedView::showsAnything() const {
  CarefulPositions positions(geometry_);
  for (const std::int64_t part : {3, 1, 5, 0, 2, 4, 6}) {
    const std::int64_t row = (2 * part + 1) * size().height / 14;
    if (showsAnythingIn(positions, static_cast<int>(row))) {
      return true;
    }
  }
  return !isFrameBlack() && showsAnythingAnywhere();
}

void CorrectedView::render(const images::Target& view, const images::Target& mask) const {
  platform::forRowRanges(size().height, [&](int begin, int end) {
    Rows rows(*this);
    for (int y = begin; y < end; ++y) {
      rows.render(y, view.pictureRow(y), mask.pixels != nullptr ? mask.pictureRow(y) : nullptr);
    }
  });
}

CorrectedView::Rows::Rows(const CorrectedView& view) : view_(view), positions_(view.geometry_) {}

void CorrectedView::Rows::render(int y, unsigned char* pixels, unsigned char* mask) {
  const RowPart row{y, 0, view_.size().width, y < lastRow_};
  lastRow_ = y;
  renderRow(view_.frame_, view_.geometry_, positions_, row, pixels, mask);
}

// Checks undistorted pixels of one row.
bool CorrectedView::showsAnythingIn(CarefulPositions& positions, int row) const {
  for (std::int64_t k = 0; k < kSpread; ++k) {
    const std::int64_t column = (2 * k + 1) * size().width / (2 * kSpread);
    const RawPosition raw = positions.at({static_cast<int>(column), row});
    unsigned char pixel[4];
    sampleOne(frame_, raw.u, raw.v, pixel);
    if (isAnythingIn(pixel, static_cast<std::size_t>(frame_.bytes))) {
      return true;
    }
  }
  return false;
}

bool CorrectedView::isFrameBlack() const {
  for (std::int32_t row = 0; row < frame_.height; ++row) {
    const unsigned char* const bytes = frame_.bufferRow(row);
    if (bytes[0] != 0 || std::memcmp(bytes, bytes + 1, frame_.rowBytes() - 1) != 0) {
      return false;
    }
  }
  return true;
}

// The undistorted image is the view whose warp is the identity.
bool CorrectedView::showsAnythingAnywhere() const {
  const ViewGeometry undistorted(geometry_.rays(), {cv::Matx33d::eye(), 0, 0, size()});
  CarefulPositions positions(undistorted);
  unsigned char pixels[kScanned * 4];
  for (int y = 0; y < size().height; ++y) {
    for (int end = size().width; end > 0; end -= kScanned) {
      const RowPart part{y, std::max(end - kScanned, 0), end};
      renderRow(frame_, undistorted, positions, part, pixels, nullptr);
      if (isAnythingIn(pixels, static_cast<std::size_t>(part.count()) *
                                   static_cast<std::size_t>(frame_.bytes))) {
        return true;
      }
    }
  }
  return false;
}

}  // namespace fisheye_calibration::rendering
