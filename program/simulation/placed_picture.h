// A picture that lies on a plane and is looked at from any distance.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace fisheye_calibration::program {

class PlacedPicture {
 public:
  // The picture, of one or three channels of 8 bits, fills `area` of the plane up to the outer
  // edges of its pixels: the first pixel's centre lies half a pixel inside the corner with the
  // least x and y.
  PlacedPicture(const cv::Mat& picture, const cv::Rect2d& area);

  const cv::Rect2d& area() const { return area_; }
  int channels() const { return levels_.front().channels(); }

  bool covers(cv::Point2d point) const {
    return point.x >= area_.x && point.y >= area_.y && point.x < area_.x + area_.width &&
           point.y < area_.y + area_.height;
  }

  // The longer side, in the picture's pixels, of a small parallelogram with these two sides.
  double pixelsAcross(cv::Point2d side, cv::Point2d otherSide) const;

  // How often the picture is to be halved until `pixels` of it are at most `most` pixels.
  int levelFor(double pixels, double most) const;

  // Interpolated linearly in the picture that has been halved `level` times, each pixel then being
  // the mean of the area that it covers. Of grey pictures, all three channels are the same.
  cv::Vec3f at(cv::Point2d point, int level) const;

 private:
  std::vector<cv::Mat> levels_;
  cv::Rect2d area_;
};

}  // namespace fisheye_calibration::program
