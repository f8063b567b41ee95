#include "solver/view_points.h"

#include "lens/check.h"

namespace fisheye_calibration::solver {

void requirePairs(const ViewPoints& view, const char* function) {
  lens::require(view.size() == view.image.size(),
                "every view has as many points in the image as on the target", function);
}

}  // namespace fisheye_calibration::solver
