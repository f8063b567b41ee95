// The points of the interface as a view of the solver.
#pragma once

#include <vector>

#include "fisheye_calibration.h"
#include "solver/view_points.h"

namespace fisheye_calibration::single {

inline solver::ViewPoints solverView(const std::vector<CalibrationPoint>& points) {
  solver::ViewPoints view;
  for (const CalibrationPoint& point : points) {
    view.X.push_back(point.Xw);
    view.Y.push_back(point.Yw);
    view.Z.push_back(0);
    view.image.x.push_back(point.ImagePtX);
    view.image.y.push_back(point.ImagePtY);
  }
  return view;
}

}  // namespace fisheye_calibration::single
