#include "robust/bed_error.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "robust/point_rows.h"
#include "robust/viewing_ray.h"

namespace fisheye_calibration::robust {
namespace {

constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

// A view that was left out has no covariance, and nothing is known about its errors.
bool isKnown(const ViewMatrix& Sigma) {
  return std::all_of(std::begin(Sigma.val), std::end(Sigma.val),
                     [](double element) { return std::isfinite(element); });
}

// Whether the camera shows the bed at g, and at which pixel.
bool isSeen(const PosedCamera& posed, const cv::Point2d& g, cv::Point2d& pixel) {
  const PointRows rows = pointRows(posed, g.x, g.y, 0);
  pixel = {rows.pixel[0], rows.pixel[1]};
  const cv::Vec3d Y = posed.R * cv::Vec3d(g.x, g.y, 0) + posed.T;
  const double theta = std::atan2(std::hypot(Y[0], Y[1]), Y[2]);
  return rows.depth > 0 && theta < turningAngle(posed.camera);
}

double sigmaAt(const PosedCamera& posed, const ViewMatrix& Sigma, const cv::Point2d& g) {
  cv::Point2d pixel;
  if (!isSeen(posed, g, pixel)) {
    return kUnknown;
  }
  // d(u, v)/d(X, Y) = d(u, v)/dT times the first two columns of R, because Y = R X + T.
  const PointRows rows = pointRows(posed, g.x, g.y, 0);
  cv::Matx<double, 2, kViewUnknowns> J;
  cv::Matx22d F;
  for (int k = 0; k < kViewUnknowns; ++k) {
    J(0, k) = rows.u[k];
    J(1, k) = rows.v[k];
  }
  for (int c = 0; c < 2; ++c) {
    for (int k = 0; k < 3; ++k) {
      F(0, c) += rows.u[9 + k] * posed.R(k, c);
      F(1, c) += rows.v[9 + k] * posed.R(k, c);
    }
  }
  const double determinant = F(0, 0) * F(1, 1) - F(0, 1) * F(1, 0);
  if (!(std::abs(determinant) > 1e-12 * F.ddot(F))) {
    return kUnknown;
  }
  const cv::Matx<double, 2, kViewUnknowns> G =
      cv::Matx22d(-F(1, 1), F(0, 1), F(1, 0), -F(0, 0)) * (1 / determinant) * J;
  return std::sqrt(std::max(0.0, cv::trace(G * Sigma * G.t())));  // rounding may make 0 negative
}

// errorAt(g) at every point; NaN if nothing is known about the view's errors.
template <class ErrorAt>
std::vector<double> onGrid(const BedView& view, const std::vector<cv::Point2d>& grid,
                           const ErrorAt& errorAt) {
  std::vector<double> errors(grid.size(), kUnknown);
  if (isKnown(view.covariance)) {
    std::transform(grid.begin(), grid.end(), errors.begin(), errorAt);
  }
  return errors;
}

}  // namespace

double bedSigma(const BedView& view, const cv::Point2d& g) {
  return isKnown(view.covariance) ? sigmaAt(PosedCamera(view.camera, view.pose), view.covariance, g)
                                  : kUnknown;
}

std::vector<double> bedBounds(const BedView& view, const std::vector<cv::Point2d>& grid) {
  const PosedCamera posed(view.camera, view.pose);
  return onGrid(view, grid, [&](const cv::Point2d& g) {
    return kBoundFactor * sigmaAt(posed, view.covariance, g);
  });
}

std::vector<double> judgedBedErrors(const BedView& view, const lens::Camera& judged,
                                    const lens::Pose& judgedPose,
                                    const std::vector<cv::Point2d>& grid) {
  const PosedCamera posed(view.camera, view.pose);
  const PosedCamera other(judged, judgedPose);
  return onGrid(view, grid, [&](const cv::Point2d& g) {
    cv::Point2d q;
    const auto shown = isSeen(other, g, q) ? bedPointOf(view.camera, view.pose, q) : std::nullopt;
    if (!shown) {
      return kUnknown;
    }
    const double bound = kBoundFactor * sigmaAt(posed, view.covariance, *shown);
    return std::hypot(cv::norm(*shown - g), bound);
  });
}

}  // namespace fisheye_calibration::robust
