#include "robust/linear_pose.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <random>

#include "lens/rotation.h"
#include "robust/median.h"
#include "robust/viewing_ray.h"

namespace fisheye_calibration::robust {
namespace {

constexpr int kRobustRounds = 5;
constexpr int kSamples = 40;
constexpr std::size_t kSampleSize = 5;
constexpr double kSmallestAngle = 1e-12;  // rad

// Eigenvalues of the normal matrix below this share of the largest count as 0. Exact points have a
// single such value; points that leave the pose undetermined have more.
constexpr double kNullShare = 1e-14;

// Plane coordinates with the points' mean at the origin and a mean distance of 1 from it.
struct Normalization {
  cv::Point2d mean;
  double scale = 1;

  explicit Normalization(const solver::ViewPoints& view) {
    const auto count = static_cast<double>(view.size());
    for (std::size_t i = 0; i < view.size(); ++i) {
      mean += cv::Point2d(view.X[i], view.Y[i]) / count;
    }
    double distance = 0;
    for (std::size_t i = 0; i < view.size(); ++i) {
      distance += std::hypot(view.X[i] - mean.x, view.Y[i] - mean.y) / count;
    }
    scale = 1 / distance;
  }

  cv::Vec3d operator()(double X, double Y) const {
    return {(X - mean.x) * scale, (Y - mean.y) * scale, 1};
  }
};

// sum w (I - d d^T) (x) M M^T: |d x H M|^2 = (H M)^T (I - d d^T) (H M) for a unit vector d.
cv::Matx<double, 9, 9> normalMatrix(const std::vector<cv::Vec3d>& rays,
                                    const std::vector<cv::Vec3d>& M,
                                    const std::vector<double>& weights) {
  cv::Matx<double, 9, 9> A;
  for (std::size_t k = 0; k < rays.size(); ++k) {
    const cv::Matx33d across = cv::Matx33d::eye() - rays[k] * rays[k].t();
    const cv::Matx33d square = (weights.empty() ? 1 : weights[k]) * (M[k] * M[k].t());
    for (int i = 0; i < 9; ++i) {
      for (int j = 0; j < 9; ++j) {
        A(i, j) += across(i / 3, j / 3) * square(i % 3, j % 3);
      }
    }
  }
  return A;
}

cv::Vec3d columnOf(const cv::Matx33d& H, int j) { return {H(0, j), H(1, j), H(2, j)}; }

// The rotation nearest to [r1 r2 r1 x r2] and the translation, of H = [r1 r2 T] up to scale.
std::optional<lens::Pose> poseOf(const cv::Matx33d& H) {
  const cv::Vec3d r1 = columnOf(H, 0);
  const cv::Vec3d r2 = columnOf(H, 1);
  const double scale = 0.5 * (cv::norm(r1) + cv::norm(r2));
  const cv::Vec3d r3 = r1.cross(r2) * (1 / scale);
  const cv::Matx33d near(r1[0], r2[0], r3[0], r1[1], r2[1], r3[1], r1[2], r2[2], r3[2]);
  if (!(scale > 0) || !cv::checkRange(near) || !cv::checkRange(near * (1 / scale))) {
    return std::nullopt;
  }
  cv::Matx31d w;
  cv::Matx33d u;
  cv::Matx33d vt;
  cv::SVD::compute(near * (1 / scale), w, u, vt);
  const cv::Matx33d R = u * vt;
  if (!(cv::determinant(R) > 0) || !(w(2) > 0)) {
    return std::nullopt;
  }
  lens::Pose pose;
  cv::Rodrigues(R, pose.om);
  pose.T = columnOf(H, 2) * (1 / scale);
  return pose;
}

std::vector<cv::Vec3d> viewingRays(const solver::ViewPoints& view, const lens::Camera& camera) {
  std::vector<cv::Vec3d> rays;
  for (std::size_t i = 0; i < view.size(); ++i) {
    rays.push_back(viewingRay(camera, {view.image.x[i], view.image.y[i]}));
  }
  return rays;
}

std::optional<lens::Pose> poseOfRays(const solver::ViewPoints& view,
                                     const std::vector<cv::Vec3d>& rays,
                                     const std::vector<double>& weights) {
  if (view.size() < 4 || !solver::isFinite(view)) {
    return std::nullopt;
  }
  const Normalization normalized(view);
  std::vector<cv::Vec3d> M;
  for (std::size_t i = 0; i < view.size(); ++i) {
    M.push_back(normalized(view.X[i], view.Y[i]));
  }
  const cv::Matx<double, 9, 9> A = normalMatrix(rays, M, weights);
  cv::Matx<double, 9, 1> values;
  cv::Matx<double, 9, 9> vectors;
  if (!cv::checkRange(A) || !cv::eigen(A, values, vectors) ||
      !(values(7) > kNullShare * values(0))) {
    return std::nullopt;
  }
  cv::Matx33d H(vectors.val + 72);  // of the smallest eigenvalue
  double ahead = 0;
  for (std::size_t i = 0; i < rays.size(); ++i) {
    ahead += (weights.empty() ? 1 : weights[i]) * rays[i].dot(H * M[i]);
  }
  H = H * (ahead < 0 ? -1 : 1) *
      cv::Matx33d(normalized.scale, 0, -normalized.scale * normalized.mean.x,  //
                  0, normalized.scale, -normalized.scale * normalized.mean.y, 0, 0, 1);
  return poseOf(H);
}

// Between the ray of each pixel and the direction in which the pose puts its point.
std::vector<double> anglesToRays(const solver::ViewPoints& view, const std::vector<cv::Vec3d>& rays,
                                 const lens::Pose& pose) {
  const cv::Matx33d R = lens::rotationFromVector(pose.om);
  std::vector<double> angles;
  for (std::size_t i = 0; i < view.size(); ++i) {
    const cv::Vec3d Y = R * cv::Vec3d(view.X[i], view.Y[i], 0) + pose.T;
    angles.push_back(std::atan2(cv::norm(rays[i].cross(Y)), rays[i].dot(Y)));
  }
  return angles;
}

// The pose of all points, or that of one of kSamples random samples of five if its median angle is
// smaller. At a fifth of wrong points a third of the samples have none.
std::optional<lens::Pose> poseOfBestSample(const solver::ViewPoints& view,
                                           const std::vector<cv::Vec3d>& rays) {
  std::optional<lens::Pose> best = poseOfRays(view, rays, {});
  double smallest = best ? median(anglesToRays(view, rays, *best)) : CV_PI;
  std::mt19937 random;  // always the same sequence
  for (int k = 0; k < kSamples && view.size() > kSampleSize; ++k) {
    std::vector<double> weights(view.size());
    for (std::size_t i = 0; i < kSampleSize; ++i) {
      weights[random() % view.size()] = 1;
    }
    const auto pose = poseOfRays(view, rays, weights);
    const double angle = pose ? median(anglesToRays(view, rays, *pose)) : CV_PI;
    if (angle < smallest) {
      smallest = angle;
      best = pose;
    }
  }
  return best;
}

}  // namespace

std::optional<lens::Pose> linearPose(const solver::ViewPoints& view, const lens::Camera& camera,
                                     const std::vector<double>& weights) {
  return poseOfRays(view, viewingRays(view, camera), weights);
}

std::optional<lens::Pose> robustLinearPose(const solver::ViewPoints& view,
                                           const lens::Camera& camera) {
  const std::vector<cv::Vec3d> rays = viewingRays(view, camera);
  std::optional<lens::Pose> pose = poseOfBestSample(view, rays);
  for (int round = 0; pose && round < kRobustRounds; ++round) {
    const std::vector<double> angles = anglesToRays(view, rays, *pose);
    const double scale = std::max(median(angles), kSmallestAngle);
    std::vector<double> weights;
    weights.reserve(angles.size());
    for (const double angle : angles) {
      weights.push_back(1 / (1 + angle * angle / (scale * scale)));
    }
    const auto next = poseOfRays(view, rays, weights);
    if (!next) {
      break;
    }
    pose = next;
  }
  return pose;
}

}  // namespace fisheye_calibration::robust
