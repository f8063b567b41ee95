// A bundle together with its noise: the weight of the prior follows from the noise, and the noise
// from the residuals.
#pragma once

#include <optional>
#include <vector>

#include "robust/bundle.h"
#include "robust/smooth_noise.h"

namespace fisheye_calibration::robust {

// Residuals below this say nothing about the noise: no detector is better, and exact points have
// none.
constexpr double kFinestNoise = 0.05;  // px

// What does not change between the solutions of one calibration.
struct FitSettings {
  LensPrior prior;
  NoiseKind noiseKind = NoiseKind::kSmooth;
  bool holdLens = false;
  cv::Matx66d heldLensCovariance;  // of the held lens, 0 if it is exact
};

struct Fit {
  Bundle bundle;
  BundleEquations equations;
  NoiseFit noise;
  int steps = 0;
  bool converged = false;
};

// Solves with kappa = 1 px^2, then again with the kappa that the noise of the last solution gives
// until it no longer changes (12 times at most), so that the start is forgotten: after two times a
// few measured views still remember it.
Fit fitWithNoise(const std::vector<solver::ViewPoints>& views, const FitSettings& settings,
                 const Bundle& start);

// std::nullopt if a direction is undetermined.
std::optional<std::vector<ViewMatrix>> covarianceOf(const std::vector<solver::ViewPoints>& views,
                                                    const FitSettings& settings, const Fit& fit);

// A start for the iteration: all poses from viewing rays of `camera`; `robust` down-weights wrong
// points. std::nullopt if a view has no pose.
std::optional<Bundle> startingBundle(const std::vector<solver::ViewPoints>& views,
                                     const lens::Camera& camera, bool robust);

}  // namespace fisheye_calibration::robust
