#include <cmath>
#include <vector>

#include "fisheye/internal.h"
#include "fisheye/intrinsic_params.h"
#include "fisheye/posed_views.h"
#include "solver/residuals.h"

namespace fisheye_calibration::fisheye {
namespace {

// Standard deviation about the mean, scaled from division by n to division by n - 1; NaN for a
// single value.
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
}  // namespace fisheye_calibration::fisheye

namespace fisheye_calibration::internal {

void EstimateUncertainties(cv::InputArrayOfArrays objectPoints, cv::InputArrayOfArrays imagePoints,
                           const IntrinsicParams& param, cv::InputArray omc, cv::InputArray Tc,
                           IntrinsicParams& errors, cv::Vec2d& std_err, double thresh_cond,
                           int check_cond, double& rms) {
  const fisheye::PosedViews posed =
      fisheye::readPosedViews(objectPoints, imagePoints, omc, Tc, "EstimateUncertainties");
  const std::vector<cv::Vec2d> residuals =
      solver::reprojectionResiduals(posed.views, toCamera(param), posed.poses);
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
  rms = solver::rootMeanSquare(residuals);
}

}  // namespace fisheye_calibration::internal
