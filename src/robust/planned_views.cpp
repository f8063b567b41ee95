#include "robust/planned_views.h"

#include <opencv2/calib3d.hpp>

#include "lens/rotation.h"
#include "robust/bundle.h"
#include "robust/viewing_ray.h"

namespace fisheye_calibration::robust {

std::optional<std::vector<ViewMatrix>> plannedCovariance(const lens::Camera& camera,
                                                         const std::vector<PlannedView>& views,
                                                         const cv::Size& imageSize, double noise,
                                                         const PlanOptions& options) {
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
  }
  const BundleProblem problem{points, PointWeights(points.size()),
                              LensPrior(imageSize, options.priors), 1, false};
  const BundleEquations equations = bundleEquations(problem, bundle);
  if (points.empty() || !(camera.fx > 0 && camera.fy > 0) || !equations.allInFront ||
      !isOneToOneUpTo(camera, equations.largestTheta)) {
    return std::nullopt;
  }
  const NoiseFit fit = noiseOfVariance(problem, bundle, equations, options.noise, noise * noise);
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
