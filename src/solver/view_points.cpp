#include "solver/view_points.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "lens/check.h"

namespace fisheye_calibration::solver {

bool isFinite(const ViewPoints& view) {
  const auto allFinite = [](const std::vector<double>& values) {
    return std::all_of(values.begin(), values.end(), [](double x) { return std::isfinite(x); });
  };
  return allFinite(view.X) && allFinite(view.Y) && allFinite(view.Z) && allFinite(view.image.x) &&
         allFinite(view.image.y);
}

std::size_t countPoints(const std::vector<ViewPoints>& views) {
  return std::accumulate(views.begin(), views.end(), std::size_t{0},
                         [](std::size_t sum, const ViewPoints& view) { return sum + view.size(); });
}

void requirePairs(const ViewPoints& view, const char* function) {
  lens::require(view.size() == view.image.size(),
                "every view has as many points in the image as on the target", function);
}

}  // namespace fisheye_calibration::solver
