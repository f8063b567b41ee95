#include "fisheye/undistortion_maps.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include "fisheye/camera_model-inl.h"
#include "fisheye/check.h"
#include "fisheye/fisheye.h"
#include "fisheye/rotation.h"

namespace fisheye {
namespace {

namespace model = HWY_NAMESPACE;

constexpr int kFractionBits = 5;
constexpr int kFractions = 1 << kFractionBits;

// The centre of an image of this width or height, a half rounded up.
int centreOf(int length) { return static_cast<int>(length * 0.5 + 0.5); }

// One row of both maps: whole pixels (column, row), wrapped to 16 bits, and the index of the
// fraction, row fraction * 32 + column fraction.
void fillRow(const RectifyingRays& rays, int i, int width, cv::Vec2s* whole, std::uint16_t* index) {
  const cv::Matx33d& iR = rays.iR;
  double X = i * iR(0, 1) + iR(0, 2);
  double Y = i * iR(1, 1) + iR(1, 2);
  double W = i * iR(2, 1) + iR(2, 2);
  for (int j = 0; j < width; ++j) {
    const RawPosition raw = rawPosition(rays.camera, X, Y, W);
    whole[j] = {static_cast<short>(raw.u >> kFractionBits),
                static_cast<short>(raw.v >> kFractionBits)};
    index[j] = static_cast<std::uint16_t>((raw.v & (kFractions - 1)) * kFractions +
                                          (raw.u & (kFractions - 1)));
    X += iR(0, 0);
    Y += iR(1, 0);
    W += iR(2, 0);
  }
}

bool isFloat(int depth) { return depth == CV_32F || depth == CV_64F; }

void checkArguments(cv::InputArray K, cv::InputArray D, cv::InputArray R, cv::InputArray P) {
  constexpr auto name = "initUndistortRectifyMap";
  require(isFloat(K.depth()) && isFloat(D.depth()),
          "(K.depth() == CV_32F || K.depth() == CV_64F) && "
          "(D.depth() == CV_32F || D.depth() == CV_64F)",
          name);
  require((P.empty() || isFloat(P.depth())) && (R.empty() || isFloat(R.depth())),
          "(P.empty() || P.depth() == CV_32F || P.depth() == CV_64F) && "
          "(R.empty() || R.depth() == CV_32F || R.depth() == CV_64F)",
          name);
  require(K.size() == cv::Size(3, 3) && (D.empty() || D.total() == 2),
          "K.size() == Size(3, 3) && (D.empty() || D.total() == 2)", name);
  require(R.empty() || R.size() == cv::Size(3, 3) ||
              R.total() * static_cast<std::size_t>(R.channels()) == 3,
          "R.empty() || R.size() == Size(3, 3) || R.total() * R.channels() == 3", name);
  require(P.empty() || P.size() == cv::Size(3, 3) || P.size() == cv::Size(4, 3),
          "P.empty() || P.size() == Size(3, 3) || P.size() == Size(4, 3)", name);
}

}  // namespace

RectifyingRays rectifyingRays(const Camera& camera, const cv::Matx33d& RR, const cv::Matx33d& P,
                              const cv::Size& size) {
  cv::Matx33d PP = P;
  PP(0, 2) = centreOf(size.width);
  PP(1, 2) = centreOf(size.height);
  return {(PP * RR).inv(cv::DECOMP_LU), camera};
}

RawPosition rawPosition(const Camera& camera, double X, double Y, double W) {
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

void initUndistortRectifyMap(cv::InputArray K, cv::InputArray D, cv::InputArray R, cv::InputArray P,
                             const cv::Size& size, int m1type, cv::OutputArray map1,
                             cv::OutputArray map2) {
  require(m1type == CV_16SC2, "m1type == CV_16SC2", "initUndistortRectifyMap");
  map1.create(size, CV_16SC2);
  map2.create(size, CV_16UC1);
  checkArguments(K, D, R, P);

  cv::Matx33d projection = cv::Matx33d::eye();
  if (!P.empty()) {
    P.getMat().colRange(0, 3).convertTo(projection, CV_64F);
  }
  const RectifyingRays rays =
      rectifyingRays(readCamera(K.getMat(), D.getMat(), 0), rotationFromArray(R), projection, size);
  cv::Mat whole = map1.getMat();
  cv::Mat index = map2.getMat();
  for (int i = 0; i < size.height; ++i) {
    fillRow(rays, i, size.width, whole.ptr<cv::Vec2s>(i), index.ptr<std::uint16_t>(i));
  }
}

}  // namespace fisheye
