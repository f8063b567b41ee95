// The noise of detected points and what it does to a least-squares solution.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "robust/arrow_matrix.h"
#include "robust/bundle.h"

namespace fisheye_calibration::robust {

enum class NoiseKind {
  kSmooth,  // errors of neighbouring points are alike: lens, flatness and printing of the target
  kWhite,   // errors of all points are independent
};

// sum_ij Omega_ij J_i^T J_j over the points of one view,
//
//   Omega_ij = 0.1 delta_ij + 0.9 exp(-|X_i - X_j|^2 / (2 (0.25 D)^2)),
//
// D the diagonal of the bounding box of the target points. Above 2000 points the second term is
// summed over about 2000 of them, spread evenly, and scaled to the full number.
ViewMatrix smoothProduct(const solver::ViewPoints& view, const lens::Camera& camera,
                         const lens::Pose& pose);

// Errors of variance s^2 per coordinate with the correlation above, or none.
struct NoiseFit {
  ArrowMatrix B;        // sum Omega_ij J_i^T J_j; M if white
  double t = 0;         // tr(M^-1 B): residual variance taken up by the unknowns
  double variance = 0;  // s^2 = rss/(rows - t), px^2
  double kappa = 0;  // weight of the prior, s^2 t/unknowns: the noise of a well-determined unknown
  bool assumed = false;  // variance is at least kAssumedVariance for lack of rows
};

// With fewer rows beyond the number of unknowns than this, the variance is at least
// kAssumedVariance.
constexpr int kFewestSpareRows = 6;
constexpr double kAssumedVariance = 0.25;  // px^2

// From the residuals of a solution without weights.
NoiseFit fitNoise(const BundleProblem& problem, const Bundle& at, const BundleEquations& equations,
                  NoiseKind kind);

// The same for a known variance.
NoiseFit noiseOfVariance(const BundleProblem& problem, const Bundle& at,
                         const BundleEquations& equations, NoiseKind kind, double variance);

// Sigma = A (s^2 B + kappa^2 P) A, A = (M + kappa P)^-1, for the lens and pose of each view.
// With a held lens of covariance L, the poses follow it: pose = -Y lens. std::nullopt if a
// direction is undetermined or determined by rounding errors alone, or if the numbers
// overflow.
std::optional<std::vector<ViewMatrix>> covariance(const BundleProblem& problem, const Bundle& at,
                                                  const BundleEquations& equations,
                                                  const NoiseFit& noise,
                                                  const cv::Matx66d& heldLensCovariance);

}  // namespace fisheye_calibration::robust
