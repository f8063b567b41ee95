#include "simulation/placed_picture.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace fisheye_calibration::program {
namespace {

cv::Vec3f pixelAt(const cv::Mat& picture, int x, int y) {
  if (picture.channels() == 1) {
    return cv::Vec3f::all(picture.at<unsigned char>(y, x));
  }
  return picture.at<cv::Vec3b>(y, x);
}

}  // namespace

PlacedPicture::PlacedPicture(const cv::Mat& picture, const cv::Rect2d& area) : area_(area) {
  levels_.push_back(picture);
  while (std::min(levels_.back().cols, levels_.back().rows) >= 4) {
    const cv::Mat& last = levels_.back();
    cv::Mat half;
    cv::resize(last, half, {(last.cols + 1) / 2, (last.rows + 1) / 2}, 0, 0, cv::INTER_AREA);
    levels_.push_back(half);
  }
}

double PlacedPicture::pixelsAcross(cv::Point2d side, cv::Point2d otherSide) const {
  const double columns = levels_.front().cols / area_.width;
  const double rows = levels_.front().rows / area_.height;
  return std::max(std::hypot(side.x * columns, side.y * rows),
                  std::hypot(otherSide.x * columns, otherSide.y * rows));
}

int PlacedPicture::levelFor(double pixels, double most) const {
  int level = 0;
  while (pixels > most && level + 1 < static_cast<int>(levels_.size())) {
    pixels /= 2;
    ++level;
  }
  return level;
}

cv::Vec3f PlacedPicture::at(cv::Point2d point, int level) const {
  const cv::Mat& picture = levels_[static_cast<std::size_t>(level)];
  // The centre of the first pixel is half a pixel from the edge; beyond the outermost centres the
  // picture goes on as it ends.
  const double x = std::clamp((point.x - area_.x) / area_.width * picture.cols - 0.5, 0.0,
                              static_cast<double>(picture.cols - 1));
  const double y = std::clamp((point.y - area_.y) / area_.height * picture.rows - 0.5, 0.0,
                              static_cast<double>(picture.rows - 1));
  const int left = static_cast<int>(x);
  const int top = static_cast<int>(y);
  const int right = std::min(left + 1, picture.cols - 1);
  const int bottom = std::min(top + 1, picture.rows - 1);
  const auto toRight = static_cast<float>(x - left);
  const auto toBottom = static_cast<float>(y - top);
  const cv::Vec3f above =
      pixelAt(picture, left, top) * (1 - toRight) + pixelAt(picture, right, top) * toRight;
  const cv::Vec3f below =
      pixelAt(picture, left, bottom) * (1 - toRight) + pixelAt(picture, right, bottom) * toRight;
  return above * (1 - toBottom) + below * toBottom;
}

}  // namespace fisheye_calibration::program
