#include "rendering/raw_position.h"

#include <cmath>
#include <limits>

#include "lens/camera_model-inl.h"

namespace fisheye_calibration::rendering {
namespace {

namespace model = lens::HWY_NAMESPACE;

// The centre of an image of this width or height, a half rounded up.
int centreOf(int length) { return static_cast<int>(length * 0.5 + 0.5); }

}  // namespace

RectifyingRays rectifyingRays(const lens::Camera& camera, const cv::Matx33d& RR,
                              const cv::Matx33d& P, const cv::Size& size) {
  cv::Matx33d PP = P;
  PP(0, 2) = centreOf(size.width);
  PP(1, 2) = centreOf(size.height);
  return {(PP * RR).inv(cv::DECOMP_LU), camera};
}

RawPosition rawPosition(const lens::Camera& camera, double X, double Y, double W) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  double u = X > 0 ? -kInfinity : kInfinity;
  double v = Y > 0 ? -kInfinity : kInfinity;
  if (!(W <= 0)) {
    const double x = X / W;
    const double y = Y / W;
    const double r = std::sqrt(x * x + y * y);
    const double thetaD = model::distortedAngle(camera, std::atan(r));
    const double scale = r == 0 ? 1.0 : thetaD / r;
    u = camera.fx * x * scale + camera.cx;
    v = camera.fy * y * scale + camera.cy;
  }
  return {roundToInt(u * kFractions), roundToInt(v * kFractions)};
}

int roundToInt(double value) {
  if (!(value >= -2147483648.5 && value < 2147483647.5)) {
    return std::numeric_limits<int>::min();
  }
  return cvRound(value);
}

}  // namespace fisheye_calibration::rendering
