// The views and points that agree with each other, and their solution.
#pragma once

#include <cstddef>
#include <vector>

#include "robust/fit.h"
#include "robust/wrong_points.h"
#include "solver/view_points.h"

namespace fisheye_calibration::robust {

struct ConsistentViews {
  PointLists wrongPoints;                // one list per view, of a wrong view as if it were alone
  std::vector<std::size_t> wrongViews;   // ascending
  std::vector<solver::ViewPoints> used;  // the other views, without their wrong points
  Fit fit;                               // of `used`
};

// Searches for wrong points, then for wrong views. A wrong view bends the solution, so that good
// points of other views seem wrong; therefore both searches begin anew without it, until no view is
// wrong. `fit` is the solution of all views and points and `start` the lens to begin again from.
ConsistentViews findConsistentViews(const std::vector<solver::ViewPoints>& views,
                                    const FitSettings& settings, const Fit& fit,
                                    const lens::Camera& start);

}  // namespace fisheye_calibration::robust
