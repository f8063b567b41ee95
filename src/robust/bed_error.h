// How far off a calibrated camera may be on the bed, the plane Z = 0.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "lens/camera.h"
#include "robust/arrow_matrix.h"

namespace fisheye_calibration::robust {

// A camera over the bed with the covariance of fx, fy, cx, cy, k0, k1, rotation vector,
// translation.
struct BedView {
  lens::Camera camera;
  lens::Pose pose;
  ViewMatrix covariance;
};

// The bound on the error in standard deviations.
constexpr double kBoundFactor = 2.5;

// The bed point that a fixed pixel shows depends on the parameters. At bed point g, seen at (u, v):
//
//   F = d(u, v)/d(X, Y),   G = -F^-1 J_g,   sigma(g) = sqrt(tr(G Sigma G^T)), world units
//
// J_g the derivatives of (u, v) with respect to the parameters. NaN if g is not seen: behind the
// camera, beyond the range in which the lens maps angles to radii one to one, or with the bed
// edge-on; and everywhere if the covariance is not finite, as that of a view that was left out.
double bedSigma(const BedView& view, const cv::Point2d& g);

// kBoundFactor sigma at every point, NaN where sigma is.
std::vector<double> bedBounds(const BedView& view, const std::vector<cv::Point2d>& grid);

// What another camera and pose, for example of a simpler calibration, may be off by: with q the
// pixel at which that camera sees g and g' the bed point that `view` gives to q,
//
//   E(g) = sqrt(|g' - g|^2 + (kBoundFactor sigma(g'))^2), world units
//
// NaN where either camera does not see the point, and everywhere if the covariance is not finite.
std::vector<double> judgedBedErrors(const BedView& view, const lens::Camera& judged,
                                    const lens::Pose& judgedPose,
                                    const std::vector<cv::Point2d>& grid);

}  // namespace fisheye_calibration::robust
