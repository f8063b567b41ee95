// Weak knowledge about every fisheye camera, for views that do not determine the lens alone.
#pragma once

#include <opencv2/core.hpp>

#include "lens/camera.h"

namespace fisheye_calibration::robust {

// h(p) = (ln(fx/fy)/0.01, (cx - cx0)/(0.03 L), (cy - cy0)/(0.03 L), k0/0.05, k1/0.10): deviations
// of a camera from square pixels, a centred lens and equidistance, in units of their usual size. L
// is the longer side and (cx0, cy0) the centre of the image, pixels.
class LensPrior {
 public:
  LensPrior(const cv::Size& imageSize, bool on);

  cv::Vec<double, 5> deviations(const lens::Camera& camera) const;  // h, 0 if off

  // dh/dp for p = (fx, fy, cx, cy, k0, k1), 0 if off.
  cv::Matx<double, 5, 6> derivatives(const lens::Camera& camera) const;

  // P = (dh/dp)^T (dh/dp)
  cv::Matx66d information(const lens::Camera& camera) const;

 private:
  bool on_;
  cv::Point2d centre_;
  double decentring_;
};

}  // namespace fisheye_calibration::robust
