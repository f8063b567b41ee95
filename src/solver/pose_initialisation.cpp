#include <cmath>
#include <numeric>
#include <opencv2/calib3d.hpp>

#include "lens/check.h"
#include "solver/homography.h"
#include "solver/pose.h"
#include "solver/view_sums.h"

namespace fisheye_calibration::solver {
namespace {

constexpr auto kInitExtrinsics = "InitExtrinsics";

// Below this the target's plane counts as one of constant Z.
constexpr double kLevelTolerance = 1e-6;

cv::Vec3d meanPoint(const ViewPoints& view) {
  const auto sum = [](const std::vector<double>& v) {
    return std::accumulate(v.begin(), v.end(), 0.0);
  };
  const auto count = static_cast<double>(view.size());
  return {sum(view.X) / count, sum(view.Y) / count, sum(view.Z) / count};
}

// Sum of (X - mean)(X - mean)^T, not divided by the number of points.
cv::Matx33d scatter(const ViewPoints& view, const cv::Vec3d& mean) {
  cv::Matx33d sum;
  for (std::size_t i = 0; i < view.size(); ++i) {
    const cv::Vec3d d = cv::Vec3d(view.X[i], view.Y[i], view.Z[i]) - mean;
    sum += d * d.t();
  }
  return sum;
}

cv::Vec3d column(const cv::Matx33d& A, int j) { return {A(0, j), A(1, j), A(2, j)}; }

cv::Vec3d unit(const cv::Vec3d& v, const char* text) {
  const double length = cv::norm(v);
  lens::require(std::abs(length) > 0, text, kInitExtrinsics);
  return v / length;
}

cv::Matx33d toMatrix(const cv::Vec3d& om) {
  cv::Matx33d R;
  cv::Rodrigues(om, R);
  return R;
}

cv::Vec3d toVector(const cv::Matx33d& R) {
  cv::Vec3d om;
  cv::Rodrigues(R, om);
  return om;
}

}  // namespace

void requirePoseInput(bool objectPoints, bool imagePoints) {
  lens::require(objectPoints, "!_objectPoints.empty() && _objectPoints.type() == CV_64FC3",
                kInitExtrinsics);
  lens::require(imagePoints, "!_imagePoints.empty() && _imagePoints.type() == CV_64FC2",
                kInitExtrinsics);
}

TargetPlane targetPlane(const ViewPoints& view) {
  requirePoseInput(!view.X.empty(), !view.image.x.empty());
  requirePairs(view, kInitExtrinsics);
  const cv::Vec3d mean = meanPoint(view);
  cv::Matx31d w;
  cv::Matx33d u;
  cv::Matx33d R;  // the rows are the principal axes, the plane's normal last
  cv::SVD::compute(scatter(view, mean), w, u, R);
  if (std::hypot(R(0, 2), R(1, 2)) < kLevelTolerance) {
    R = cv::Matx33d::eye();
  }
  if (cv::determinant(R) < 0) {
    R = -R;
  }
  TargetPlane plane{R, -(R * mean), PlanarPoints(view.size())};
  for (std::size_t i = 0; i < view.size(); ++i) {
    const cv::Vec3d X = R * cv::Vec3d(view.X[i], view.Y[i], view.Z[i]) + plane.T;
    plane.points.x[i] = X[0];
    plane.points.y[i] = X[1];
  }
  return plane;
}

std::optional<lens::Pose> initialPose(const ViewPoints& view, const TargetPlane& plane,
                                      const lens::Camera& camera) {
  PlanarPoints ideal(view.size());
  normalizePixels(view.image, camera, ideal);
  cv::Matx33d H = planarHomography(ideal, plane.points);

  // H is proportional to [r1 r2 t].
  const double scale = 0.5 * (cv::norm(column(H, 0)) + cv::norm(column(H, 1)));
  if (std::isnan(scale)) {
    return std::nullopt;
  }
  H = H * (1 / scale);
  const cv::Vec3d u1 = unit(column(H, 0), "fabs(norm_u1) > 0");
  const cv::Vec3d u2 = unit(column(H, 1) - u1.dot(column(H, 1)) * u1, "fabs(norm_u2) > 0");
  const cv::Vec3d u3 = u1.cross(u2);
  const cv::Matx33d frame(u1[0], u2[0], u3[0], u1[1], u2[1], u3[1], u1[2], u2[2], u3[2]);
  const cv::Matx33d R = toMatrix(toVector(frame));  // the round trip gives an exact rotation
  return lens::Pose{toVector(R * plane.R), column(H, 2) + R * plane.T};
}

}  // namespace fisheye_calibration::solver
