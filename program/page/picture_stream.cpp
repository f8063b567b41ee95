#include "page/picture_stream.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace fisheye_calibration::program {
namespace {

constexpr std::size_t kKept = 6;  // encoded pictures: two pages with different parts and more
constexpr int kQuality = 85;      // of JPEG

std::shared_ptr<const std::vector<unsigned char>> jpegOf(const cv::Mat& picture, int columns) {
  cv::Mat shown = picture;
  if (picture.cols > columns) {
    const double scale = static_cast<double>(columns) / picture.cols;
    const int rows = std::max(1, static_cast<int>(std::lround(picture.rows * scale)));
    cv::resize(picture, shown, {columns, rows}, 0, 0, cv::INTER_AREA);
  }
  auto jpeg = std::make_shared<std::vector<unsigned char>>();
  cv::imencode(".jpg", shown, *jpeg, {cv::IMWRITE_JPEG_QUALITY, kQuality});
  return jpeg;
}

}  // namespace

cv::Rect partWithin(const std::optional<cv::Rect2d>& part, const cv::Size& whole) {
  if (!part) {
    return {0, 0, whole.width, whole.height};
  }
  const auto from = [](double start, int size) {
    return static_cast<int>(std::clamp(std::floor(start), 0.0, size - 1.0));
  };
  const auto to = [](double end, int least, int size) {
    return static_cast<int>(std::clamp(std::ceil(end), least + 1.0, static_cast<double>(size)));
  };
  const int left = from(part->x, whole.width);
  const int top = from(part->y, whole.height);
  return {left, top, to(part->x + part->width, left, whole.width) - left,
          to(part->y + part->height, top, whole.height) - top};
}

EncodedPicture PictureStream::encoded(const Version& version, const PartWish& wish,
                                      const std::function<cv::Mat()>& render) {
  const std::lock_guard lock(mutex_);
  for (const Made& made : made_) {
    if (made.version == version && made.wish == wish) {
      return made.picture;
    }
  }
  if (rendered_.empty() || renderedVersion_ != version) {
    rendered_ = render();
    renderedVersion_ = version;
  }
  EncodedPicture picture{.whole = rendered_.size()};
  picture.part = partWithin(wish.part, picture.whole);
  picture.jpeg = jpegOf(rendered_(picture.part), wish.columns);
  made_.push_front({version, wish, picture});
  if (made_.size() > kKept) {
    made_.pop_back();
  }
  return picture;
}

}  // namespace fisheye_calibration::program
