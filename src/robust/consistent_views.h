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

// The elements whose indices are not among `listed`, which ascends.
template <class T>
std::vector<T> withoutListed(const std::vector<T>& all, const std::vector<std::size_t>& listed) {
  std::vector<T> kept;
  auto next = listed.begin();
  for (std::size_t j = 0; j < all.size(); ++j) {
    if (next != listed.end() && *next == j) {
      ++next;
    } else {
      kept.push_back(all[j]);
    }
  }
  return kept;
}

}  // namespace fisheye_calibration::robust
