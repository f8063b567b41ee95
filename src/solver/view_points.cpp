#include "solver/view_points.h"

#include <numeric>

#include "lens/check.h"

namespace fisheye_calibration::solver {

std::size_t countPoints(const std::vector<ViewPoints>& views) {
  return std::accumulate(views.begin(), views.end(), std::size_t{0},
                         [](std::size_t sum, const ViewPoints& view) { return sum + view.size(); });
}

void requirePairs(const ViewPoints& view, const char* function) {
  lens::require(view.size() == view.image.size(),
                "every view has as many points in the image as on the target", function);
}

}  // namespace fisheye_calibration::solver
