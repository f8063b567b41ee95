// Views that contradict the others.
#pragma once

#include <cstddef>
#include <vector>

#include "robust/fit.h"
#include "solver/view_points.h"

namespace fisheye_calibration::robust {

// Fewer views are not searched: two views that contradict each other are equally suspect.
constexpr std::size_t kFewestSearchedViews = 3;

// Views whose residual, with the lens of the other views and a pose of their own, exceeds
//   - 4 times the median rms of the other views (at least 0.05 px)
//   - 4 times what the noise and the covariance of that lens explain.
// Ascending indices. `fit` is the solution of all views.
std::vector<std::size_t> findWrongViews(const std::vector<solver::ViewPoints>& views,
                                        const FitSettings& settings, const Fit& fit);

// The pose of one view with a given lens, from the linear pose.
lens::Pose poseWithLens(const solver::ViewPoints& view, const FitSettings& settings,
                        const lens::Camera& camera, const lens::Pose& start);

}  // namespace fisheye_calibration::robust
