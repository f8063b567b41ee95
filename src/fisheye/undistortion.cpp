#include <algorithm>
#include <cmath>
#include <limits>

#include "fisheye/arrays.h"
#include "fisheye/fisheye.h"
#include "fisheye/internal.h"
#include "lens/check.h"
#include "lens/inverse_lens.h"

namespace fisheye_calibration::fisheye {
namespace {

lens::NewtonCriteria readCriteria(const cv::TermCriteria& criteria) {
  const bool counts = (criteria.type & cv::TermCriteria::COUNT) != 0;
  return {counts ? criteria.maxCount : std::numeric_limits<int>::max(),
          (criteria.type & cv::TermCriteria::EPS) != 0, criteria.epsilon};
}

// The left 3x3 block of P times the rotation R, either of which may be absent.
cv::Matx33d newProjection(cv::InputArray R, cv::InputArray P) {
  const cv::Matx33d rotation = rotationFromArray(R);
  if (P.empty()) {
    return rotation;
  }
  cv::Matx33d projection;
  P.getMat().colRange(0, 3).convertTo(projection, CV_64F);
  return projection * rotation;
}

// Maps a distorted normalised point to its final position.
cv::Vec2d undistortPoint(const lens::Camera& camera, const cv::Vec2d& pw, const cv::Matx33d& RR,
                         const lens::NewtonCriteria& criteria) {
  const double radius = std::sqrt(pw[0] * pw[0] + pw[1] * pw[1]);
  double scale = 0;
  if (!lens::undistortionScale(camera, std::clamp(radius, -lens::kHalfPi, lens::kHalfPi), criteria,
                               scale)) {
    return {lens::kNoSolution, lens::kNoSolution};
  }
  const cv::Vec3d pr = RR * cv::Vec3d(pw[0] * scale, pw[1] * scale, 1.0);
  return {pr[0] / pr[2], pr[1] / pr[2]};
}

// `undistorted` is continuous and holds as many elements as `distorted`, in any shape.
template <class Real>
void undistortAll(const cv::Mat& distorted, const lens::Camera& camera, const cv::Matx33d& RR,
                  const lens::NewtonCriteria& criteria, cv::Mat& undistorted) {
  auto* out = undistorted.ptr<cv::Vec<Real, 2>>();
  for (int i = 0; i < distorted.rows; ++i) {
    const auto* in = distorted.ptr<cv::Vec<Real, 2>>(i);
    for (int j = 0; j < distorted.cols; ++j, ++out) {
      const cv::Vec2d pw((static_cast<double>(in[j][0]) - camera.cx) / camera.fx,
                         (static_cast<double>(in[j][1]) - camera.cy) / camera.fy);
      const cv::Vec2d position = undistortPoint(camera, pw, RR, criteria);
      *out = {static_cast<Real>(position[0]), static_cast<Real>(position[1])};
    }
  }
}

}  // namespace

void undistortPoints(cv::InputArray distorted, cv::OutputArray undistorted, cv::InputArray K,
                     cv::InputArray D, cv::InputArray R, cv::InputArray P,
                     cv::TermCriteria criteria) {
  constexpr auto kName = "undistortPoints";
  lens::require(distorted.type() == CV_32FC2 || distorted.type() == CV_64FC2,
                "distorted.type() == CV_32FC2 || distorted.type() == CV_64FC2", kName);
  undistorted.create(distorted.size(), distorted.type());
  lens::require(P.empty() || P.size() == cv::Size(3, 3) || P.size() == cv::Size(4, 3),
                "P.empty() || P.size() == Size(3, 3) || P.size() == Size(4, 3)", kName);
  lens::require(R.empty() || R.size() == cv::Size(3, 3) ||
                    R.total() * static_cast<std::size_t>(R.channels()) == 3,
                "R.empty() || R.size() == Size(3, 3) || R.total() * R.channels() == 3", kName);
  lens::require(
      D.total() == 2 && K.size() == cv::Size(3, 3) && (K.depth() == CV_32F || K.depth() == CV_64F),
      "D.total() == 2 && K.size() == Size(3, 3) && (K.depth() == CV_32F || K.depth() == CV_64F)",
      kName);
  lens::require(criteria.isValid(), "criteria.isValid()", kName);

  const cv::Mat in = distorted.getMat();
  cv::Mat created = undistorted.getMat();
  cv::Mat out = created.isContinuous() ? created : created.clone();
  const lens::Camera camera = readCamera(K.getMat(), D.getMat(), 0);
  const cv::Matx33d RR = newProjection(R, P);
  if (in.depth() == CV_32F) {
    undistortAll<float>(in, camera, RR, readCriteria(criteria), out);
  } else {
    undistortAll<double>(in, camera, RR, readCriteria(criteria), out);
  }
  if (!created.isContinuous()) {
    out.copyTo(created);
  }
}

}  // namespace fisheye_calibration::fisheye

namespace fisheye_calibration::internal {

cv::Mat NormalizePixels(const cv::Mat& imagePoints, const IntrinsicParams& param) {
  lens::require(!imagePoints.empty() && imagePoints.type() == CV_64FC2,
                "!imagePoints.empty() && imagePoints.type() == CV_64FC2", "NormalizePixels");
  const cv::Mat pixels = imagePoints.isContinuous() ? imagePoints : imagePoints.clone();
  const auto* in = pixels.ptr<cv::Vec2d>();
  cv::Mat distorted(static_cast<int>(pixels.total()), 1, CV_64FC2);
  for (int i = 0; i < distorted.rows; ++i) {
    const double y = (in[i][1] - param.principalPoint[1]) / param.focalLength[1];
    const double x = (in[i][0] - param.principalPoint[0]) / param.focalLength[0];
    distorted.at<cv::Vec2d>(i) = {x - param.skew * y, y};
  }
  cv::Mat undistorted;
  fisheye::undistortPoints(distorted, undistorted, cv::Matx33d::eye(), param.distortion);
  return undistorted;
}

}  // namespace fisheye_calibration::internal
