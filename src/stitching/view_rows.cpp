#include "stitching/view_rows.h"

namespace fisheye_calibration::stitching {

RenderedRows::RenderedRows(const rendering::CorrectedView* view, int bytes, std::int32_t ring)
    : size_(view != nullptr ? view->size() : cv::Size()),
      width_(static_cast<std::size_t>(size_.width)),
      stride_(width_ * static_cast<std::size_t>(bytes)),
      kept_(static_cast<std::size_t>(ring), -1),
      pixels_(std::make_unique_for_overwrite<unsigned char[]>(stride_ * kept_.size())),
      masks_(std::make_unique_for_overwrite<unsigned char[]>(width_ * kept_.size())) {
  if (view != nullptr) {
    rows_.emplace(*view);
  }
}

ViewRow RenderedRows::bufferRow(std::int32_t row) {
  const std::size_t place = static_cast<std::size_t>(row) & (kept_.size() - 1);
  unsigned char* const pixels = pixels_.get() + place * stride_;
  unsigned char* const mask = masks_.get() + place * width_;
  if (kept_[place] != row) {
    kept_[place] = -1;  // until it is complete
    rows_->render(size_.height - 1 - row, pixels, mask);
    kept_[place] = row;
  }
  return {pixels, mask};
}

}  // namespace fisheye_calibration::stitching
