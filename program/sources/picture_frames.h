// Still pictures as a source of frames.
#pragma once

#include <cstddef>
#include <filesystem>
#include <vector>

#include "sources/frame_source.h"

namespace fisheye_calibration::program {

// Pictures are read when their turn comes, as the program reads them elsewhere: turned as their
// orientation tag says, 16 bits scaled to eight. One that cannot be read is a broken frame.
class PictureFrames : public FrameSource {
 public:
  PictureFrames(SourceKind kind, std::vector<std::filesystem::path> pictures)
      : kind_(kind), pictures_(std::move(pictures)) {}

  std::optional<SourceFrame> next() override;
  SourceKind kind() const override { return kind_; }
  double rate() const override { return 0; }
  std::optional<int> count() const override { return static_cast<int>(pictures_.size()); }

 private:
  SourceKind kind_;
  std::vector<std::filesystem::path> pictures_;
  std::size_t taken_ = 0;
};

}  // namespace fisheye_calibration::program
