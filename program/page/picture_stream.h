// JPEG pictures of frames, each made once however many pages show it.
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

namespace fisheye_calibration::program {

struct PartWish {
  int columns = 1920;              // of the JPEG picture, at most
  std::optional<cv::Rect2d> part;  // pixels of the whole picture; nothing: all of it

  bool operator==(const PartWish&) const = default;
};

struct EncodedPicture {
  cv::Size whole;
  cv::Rect part;  // what the JPEG picture shows, pixels of the whole
  std::shared_ptr<const std::vector<unsigned char>> jpeg;
};

// Of one view of a source. `version` tells pictures of different frames, or of different
// calibrations, apart.
class PictureStream {
 public:
  using Version = std::pair<std::uint64_t, std::shared_ptr<const void>>;
  EncodedPicture encoded(const Version& version, const PartWish& wish,
                         const std::function<cv::Mat()>& render);

 private:
  struct Made {
    Version version;
    PartWish wish;
    EncodedPicture picture;
  };
  std::mutex mutex_;
  Version renderedVersion_{};
  cv::Mat rendered_;
  std::list<Made> made_;  // the newest first
};

// The wished part in whole pixels, within the picture and not empty.
cv::Rect partWithin(const std::optional<cv::Rect2d>& part, const cv::Size& whole);

}  // namespace fisheye_calibration::program
