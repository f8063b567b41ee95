// Points that contradict the rest of their view.
#pragma once

#include <cstddef>
#include <vector>

#include "robust/fit.h"
#include "solver/view_points.h"

namespace fisheye_calibration::robust {

// Ascending indices of points, one list per view.
using PointLists = std::vector<std::vector<std::size_t>>;

// Views of fewer points are not searched: too little is left to judge a point by.
constexpr std::size_t kFewestSearchedPoints = 9;

// The view without the listed points.
solver::ViewPoints without(const solver::ViewPoints& view, const std::vector<std::size_t>& wrong);
std::vector<solver::ViewPoints> without(const std::vector<solver::ViewPoints>& views,
                                        const PointLists& wrong);

// Points whose residual, in a solution without them, exceeds
//   - 6 robust standard deviations of their view's residuals (median length/1.177, at least 0.05
//   px)
//   - 5 standard deviations of what the other points predict, e^T (s^2 I + J Sigma J^T)^-1 e > 25.
// The search runs if a residual is conspicuous or a view has fewer than 30 points, among which a
// wrong one bends the solution towards itself.
//
// `fit` is the solution of all points and `start` the lens to begin again from.
PointLists findWrongPoints(const std::vector<solver::ViewPoints>& views,
                           const FitSettings& settings, const Fit& fit, const lens::Camera& start);

}  // namespace fisheye_calibration::robust
