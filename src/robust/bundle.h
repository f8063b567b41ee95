// Intrinsics of one camera and the poses of all views together, by weighted least squares.
#pragma once

#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

#include "lens/camera.h"
#include "robust/arrow_matrix.h"
#include "robust/lens_prior.h"
#include "solver/view_points.h"

namespace fisheye_calibration::robust {

struct Bundle {
  lens::Camera camera;
  std::vector<lens::Pose> poses;  // one per view
};

// Weights of the points, one list per view; an empty list means 1 for all.
using PointWeights = std::vector<std::vector<double>>;

struct BundleProblem {
  const std::vector<solver::ViewPoints>* views = nullptr;  // not owned
  PointWeights weights;                                    // as many lists as views
  LensPrior prior;
  double kappa = 1;  // weight of the prior, px^2
  bool holdLens = false;
};

// The problem at one bundle: M = sum w J^T J and b = sum w J^T e without the prior, rss = sum w
// |e|^2.
struct BundleEquations {
  ArrowMatrix M;
  ArrowVector b;
  double rss = 0;
  bool allInFront = false;  // the points have positive depth
  double largestTheta = 0;  // incidence angle, radians
};

BundleEquations bundleEquations(const BundleProblem& problem, const Bundle& at);

struct BundleResult {
  Bundle bundle;
  BundleEquations equations;  // there
  int steps = 0;
  bool converged = false;
};

// Levenberg-Marquardt on rss + kappa |h|^2, h as in LensPrior. Steps are damped in proportion to
// the diagonal, and may cross the plane of the camera (see PointRows). Converged once a step, with
// and without its damping, promises to reduce the cost by less than 1e-16 of it.
BundleResult solveBundle(const BundleProblem& problem, const Bundle& start, int maxSteps = 200);

}  // namespace fisheye_calibration::robust
