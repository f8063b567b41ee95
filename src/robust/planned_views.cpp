#include "robust/planned_views.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>

#include "lens/rotation.h"
#include "robust/bundle.h"
#include "robust/point_rows.h"
#include "robust/viewing_ray.h"

namespace fisheye_calibration::robust {

namespace {

// Points may be this far outside the picture, of its longer side: those of a view that was taken
// are measured inside, but their projections differ by a residual.
constexpr double kBeyondEdge = 0.01;

bool isInPicture(const solver::ViewPoints& view, const PosedCamera& posed,
                 const cv::Size& imageSize) {
  const double beyond = 0.5 + kBeyondEdge * std::max(imageSize.width, imageSize.height);
  for (std::size_t i = 0; i < view.size(); ++i) {
    const cv::Vec2d pixel = pointRows(posed, view.X[i], view.Y[i], view.Z[i]).pixel;
    if (!(pixel[0] >= -beyond && pixel[0] <= imageSize.width - 1 + beyond && pixel[1] >= -beyond &&
          pixel[1] <= imageSize.height - 1 + beyond)) {
      return false;
    }
  }
  return true;
}

}  // namespace

std::optional<std::vector<ViewMatrix>> plannedCovariance(const lens::Camera& camera,
                                                         const std::vector<PlannedView>& views,
                                                         const cv::Size& imageSize, double sigma,
                                                         const PlanOptions& options) {
  if (views.empty() || imageSize.width <= 0 || imageSize.height <= 0 || !std::isfinite(sigma) ||
      sigma < 0 || !(camera.fx > 0 && camera.fy > 0)) {
    return std::nullopt;
  }
  std::vector<solver::ViewPoints> points;
  Bundle bundle{camera, {}};
  for (const PlannedView& view : views) {
    const std::size_t count = view.target.size();
    if (count == 0 || view.target.y.size() != count) {
      return std::nullopt;
    }
    // No equation below reads the pixels except for the residuals, which are not used.
    points.push_back(
        {view.target.x, view.target.y, std::vector<double>(count), solver::PlanarPoints(count)});
    bundle.poses.push_back(view.pose);
    if (!isInPicture(points.back(), PosedCamera(camera, view.pose), imageSize)) {
      return std::nullopt;
    }
  }
  const BundleProblem problem{&points, PointWeights(points.size()),
                              LensPrior(imageSize, options.priors), 1, false};
  const BundleEquations equations = bundleEquations(problem, bundle);
  if (!equations.allInFront || !isOneToOneUpTo(camera, equations.largestTheta)) {
    return std::nullopt;
  }
  const NoiseFit fit =
      noiseOfVariance(problem, bundle, equations, options.noiseKind, sigma * sigma);
  return covariance(problem, bundle, equations, fit, cv::Matx66d::zeros());
}

lens::Pose withTurnedTarget(const lens::Pose& pose, const cv::Point2d& centre,
                            const cv::Vec3d& turn) {
  // X_turned = c + Q (X - c), Y = R X_turned + T
  const cv::Matx33d R = lens::rotationFromVector(pose.om);
  const cv::Matx33d Q = lens::rotationFromVector(turn);
  const cv::Vec3d c(centre.x, centre.y, 0);
  lens::Pose turned;
  cv::Rodrigues(R * Q, turned.om);
  turned.T = R * (c - Q * c) + pose.T;
  return turned;
}

}  // namespace fisheye_calibration::robust
