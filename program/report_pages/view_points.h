// The points of every view: their residuals as arrows and numbers, and where they lie in the
// picture.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/size.h"
#include "fisheye_calibration.h"
#include "reports/calibration_json.h"

namespace fisheye_calibration::program {

struct ViewPoints {
  std::string name;
  std::vector<CalibrationPoint> points;  // with their reprojections, if there are any
  std::vector<std::size_t> leftOut;      // positions of the points that contradict the others
  bool fits = true;                      // the view does not contradict the others
  bool projected = true;                 // there are reprojections
};

// Of the bed's view as the camera that is written sees its points, of the others as the robust
// solver does: only that one knows where their targets are. In the order of the command line.
std::vector<ViewPoints> viewPointsOf(const CalibrationReport& report);

// The residuals of the view of that number, from 1. Of more than `most` points, those are shown
// that contradict the others, then those with the largest residuals.
std::string residualFigure(const ViewPoints& view, const Size& image, std::size_t number,
                           std::size_t most);
std::string residualTable(const ViewPoints& view, std::size_t number, std::size_t most);

// How many points of each of these views a page of less than 3 MB shows.
std::size_t mostPointsOf(const ViewPoints& view, const std::vector<ViewPoints>& views);

// The points of all views in the raw picture with the area that they cover, and a table of it.
std::string coverageFigure(const std::vector<ViewPoints>& views, const Size& image);

}  // namespace fisheye_calibration::program
