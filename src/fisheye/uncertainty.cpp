#include "fisheye/uncertainty.h"

#include <cmath>

#include "fisheye/camera_model-inl.h"
#include "fisheye/internal.h"
#include "fisheye/intrinsic_params.h"
#include "fisheye/normal_equations.h"
#include "fisheye/posed_views.h"
#include "fisheye/rotation.h"

namespace fisheye {
namespace {

namespace model = HWY_NAMESPACE;

// Standard deviation about the mean, scaled from division by n to division by n - 1; not a number
// for a single value.
double sampleDeviation(const std::vector<double>& values) {
  const auto n = static_cast<double>(values.size());
  double mean = 0;
  for (const double value : values) {
    mean += value;
  }
  mean /= n;
  double squares = 0;
  for (const double value : values) {
    squares += (value - mean) * (value - mean);
  }
  return std::sqrt(squares / n) * std::sqrt(n / (n - 1));
}

}  // namespace

std::vector<cv::Vec2d> reprojectionResiduals(const std::vector<ViewPoints>& views,
                                             const Camera& camera, const std::vector<Pose>& poses) {
  std::vector<cv::Vec2d> residuals;
  for (std::size_t i = 0; i < views.size(); ++i) {
    const ViewPoints& view = views[i];
    const cv::Matx33d R = rotationFromVector(poses[i].om);
    for (std::size_t k = 0; k < view.size(); ++k) {
      const auto p = model::projectPoint(camera, R, poses[i].T, view.X[k], view.Y[k], view.Z[k]);
      residuals.emplace_back(view.image.x[k] - p.u, view.image.y[k] - p.v);
    }
  }
  return residuals;
}

double rootMeanSquare(const std::vector<cv::Vec2d>& residuals) {
  double squares = 0;
  for (const cv::Vec2d& r : residuals) {
    squares += r.dot(r);
  }
  return std::sqrt(squares / static_cast<double>(residuals.size()));
}

}  // namespace fisheye

namespace internal {

void EstimateUncertainties(cv::InputArrayOfArrays objectPoints, cv::InputArrayOfArrays imagePoints,
                           const IntrinsicParams& param, cv::InputArray omc, cv::InputArray Tc,
                           IntrinsicParams& errors, cv::Vec2d& std_err, double thresh_cond,
                           int check_cond, double& rms) {
  const fisheye::PosedViews posed =
      fisheye::readPosedViews(objectPoints, imagePoints, omc, Tc, "EstimateUncertainties");
  const std::vector<cv::Vec2d> residuals =
      fisheye::reprojectionResiduals(posed.views, toCamera(param), posed.poses);
  std::vector<double> dx;
  std::vector<double> dy;
  for (const cv::Vec2d& r : residuals) {
    dx.push_back(r[0]);
    dy.push_back(r[1]);
  }
  std_err = {fisheye::sampleDeviation(dx), fisheye::sampleDeviation(dy)};
  std::vector<double> components = dx;
  components.insert(components.end(), dy.begin(), dy.end());
  const double sigma = fisheye::sampleDeviation(components);

  // The covariance of the parameters is sigma^2 (J^T J)^-1.
  cv::Mat JJ2;
  cv::Mat ex3;
  ComputeJacobians(objectPoints, imagePoints, param, omc, Tc, check_cond, thresh_cond, JJ2, ex3);
  cv::Mat inverse;
  cv::invert(JJ2, inverse, cv::DECOMP_LU);
  cv::Mat deviations;
  cv::sqrt(inverse.diag(), deviations);
  errors = cv::Mat(3 * sigma * deviations);
  rms = fisheye::rootMeanSquare(residuals);
}

}  // namespace internal
