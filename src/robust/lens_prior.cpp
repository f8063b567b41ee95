#include "robust/lens_prior.h"

#include <algorithm>
#include <cmath>

namespace fisheye_calibration::robust {
namespace {

constexpr double kAspect = 0.01;
constexpr double kDecentring = 0.03;
constexpr double kFirstCoefficient = 0.05;
constexpr double kSecondCoefficient = 0.10;

}  // namespace

LensPrior::LensPrior(const cv::Size& imageSize, bool on)
    : on_(on),
      centre_((imageSize.width - 1) / 2.0, (imageSize.height - 1) / 2.0),
      decentring_(kDecentring * std::max(imageSize.width, imageSize.height)) {}

cv::Vec<double, 5> LensPrior::deviations(const lens::Camera& camera) const {
  if (!on_) {
    return {};
  }
  return {std::log(camera.fx / camera.fy) / kAspect, (camera.cx - centre_.x) / decentring_,
          (camera.cy - centre_.y) / decentring_, camera.k0 / kFirstCoefficient,
          camera.k1 / kSecondCoefficient};
}

cv::Matx<double, 5, 6> LensPrior::derivatives(const lens::Camera& camera) const {
  cv::Matx<double, 5, 6> d;
  if (on_) {
    d(0, 0) = 1 / (camera.fx * kAspect);
    d(0, 1) = -1 / (camera.fy * kAspect);
    d(1, 2) = 1 / decentring_;
    d(2, 3) = 1 / decentring_;
    d(3, 4) = 1 / kFirstCoefficient;
    d(4, 5) = 1 / kSecondCoefficient;
  }
  return d;
}

cv::Matx66d LensPrior::information(const lens::Camera& camera) const {
  const cv::Matx<double, 5, 6> d = derivatives(camera);
  return d.t() * d;
}

}  // namespace fisheye_calibration::robust
