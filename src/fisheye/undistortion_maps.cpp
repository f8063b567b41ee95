#include <cstdint>

#include "fisheye/arrays.h"
#include "fisheye/fisheye.h"
#include "lens/check.h"
#include "rendering/raw_position.h"

namespace fisheye_calibration::fisheye {
namespace {

// One row of both maps: whole pixels (column, row), wrapped to 16 bits (compatibility 39), and the
// index of the fraction, row fraction * 32 + column fraction.
void fillRow(const rendering::RectifyingRays& rays, int i, int width, cv::Vec2s* whole,
             std::uint16_t* index) {
  const cv::Matx33d& iR = rays.iR;
  double X = i * iR(0, 1) + iR(0, 2);
  double Y = i * iR(1, 1) + iR(1, 2);
  double W = i * iR(2, 1) + iR(2, 2);
  for (int j = 0; j < width; ++j) {
    const rendering::RawPosition raw = rendering::rawPosition(rays.camera, X, Y, W);
    whole[j] = {static_cast<short>(raw.u >> rendering::kFractionBits),
                static_cast<short>(raw.v >> rendering::kFractionBits)};
    index[j] =
        static_cast<std::uint16_t>((raw.v & (rendering::kFractions - 1)) * rendering::kFractions +
                                   (raw.u & (rendering::kFractions - 1)));
    X += iR(0, 0);
    Y += iR(1, 0);
    W += iR(2, 0);
  }
}

bool isFloat(int depth) { return depth == CV_32F || depth == CV_64F; }

void checkArguments(cv::InputArray K, cv::InputArray D, cv::InputArray R, cv::InputArray P) {
  constexpr auto kName = "initUndistortRectifyMap";
  lens::require(isFloat(K.depth()) && isFloat(D.depth()),
                "(K.depth() == CV_32F || K.depth() == CV_64F) && "
                "(D.depth() == CV_32F || D.depth() == CV_64F)",
                kName);
  lens::require((P.empty() || isFloat(P.depth())) && (R.empty() || isFloat(R.depth())),
                "(P.empty() || P.depth() == CV_32F || P.depth() == CV_64F) && "
                "(R.empty() || R.depth() == CV_32F || R.depth() == CV_64F)",
                kName);
  lens::require(K.size() == cv::Size(3, 3) && (D.empty() || D.total() == 2),
                "K.size() == Size(3, 3) && (D.empty() || D.total() == 2)", kName);
  lens::require(R.empty() || R.size() == cv::Size(3, 3) ||
                    R.total() * static_cast<std::size_t>(R.channels()) == 3,
                "R.empty() || R.size() == Size(3, 3) || R.total() * R.channels() == 3", kName);
  lens::require(P.empty() || P.size() == cv::Size(3, 3) || P.size() == cv::Size(4, 3),
                "P.empty() || P.size() == Size(3, 3) || P.size() == Size(4, 3)", kName);
}

}  // namespace

void initUndistortRectifyMap(cv::InputArray K, cv::InputArray D, cv::InputArray R, cv::InputArray P,
                             const cv::Size& size, int m1type, cv::OutputArray map1,
                             cv::OutputArray map2) {
  lens::require(m1type == CV_16SC2, "m1type == CV_16SC2", "initUndistortRectifyMap");
  map1.create(size, CV_16SC2);
  map2.create(size, CV_16UC1);
  checkArguments(K, D, R, P);

  cv::Matx33d projection = cv::Matx33d::eye();
  if (!P.empty()) {
    P.getMat().colRange(0, 3).convertTo(projection, CV_64F);
  }
  const rendering::RectifyingRays rays = rendering::rectifyingRays(
      readCamera(K.getMat(), D.getMat(), 0), rotationFromArray(R), projection, size);
  cv::Mat whole = map1.getMat();
  cv::Mat index = map2.getMat();
  for (int i = 0; i < size.height; ++i) {
    fillRow(rays, i, size.width, whole.ptr<cv::Vec2s>(i), index.ptr<std::uint16_t>(i));
  }
}

}  // namespace fisheye_calibration::fisheye
