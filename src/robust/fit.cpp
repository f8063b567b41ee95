#include "robust/fit.h"

#include <cmath>

#include "robust/linear_pose.h"

namespace fisheye_calibration::robust {
namespace {

constexpr int kMostNoiseRounds = 12;
constexpr double kSameKappa = 1e-8;  // relative change

}  // namespace

std::optional<Bundle> startingBundle(const std::vector<solver::ViewPoints>& views,
                                     const lens::Camera& camera, bool robust) {
  Bundle start{camera, {}};
  for (const solver::ViewPoints& view : views) {
    const auto pose = robust ? robustLinearPose(view, camera) : linearPose(view, camera, {});
    if (!pose) {
      return std::nullopt;
    }
    start.poses.push_back(*pose);
  }
  return start;
}

Fit fitWithNoise(const std::vector<solver::ViewPoints>& views, const FitSettings& settings,
                 const Bundle& start) {
  BundleProblem problem{&views, PointWeights(views.size()), settings.prior, 1, settings.holdLens};
  Fit fit;
  fit.bundle = start;
  for (int round = 0; round < kMostNoiseRounds; ++round) {
    BundleResult solved = solveBundle(problem, fit.bundle);
    fit.bundle = std::move(solved.bundle);
    fit.equations = std::move(solved.equations);
    fit.steps += solved.steps;
    fit.converged = solved.converged;
    fit.noise = fitNoise(problem, fit.bundle, fit.equations, settings.noiseKind);
    const double change = std::abs(fit.noise.kappa - problem.kappa);
    problem.kappa = fit.noise.kappa;
    if (settings.holdLens || change <= kSameKappa * problem.kappa) {
      break;
    }
  }
  return fit;
}

std::optional<std::vector<ViewMatrix>> covarianceOf(const std::vector<solver::ViewPoints>& views,
                                                    const FitSettings& settings, const Fit& fit) {
  const BundleProblem problem{&views, PointWeights(views.size()), settings.prior, fit.noise.kappa,
                              settings.holdLens};
  return covariance(problem, fit.bundle, fit.equations, fit.noise, settings.heldLensCovariance);
}

}  // namespace fisheye_calibration::robust
