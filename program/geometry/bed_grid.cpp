#include "geometry/bed_grid.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace fisheye_calibration::program {

BedGrid gridOver(const cv::Rect2d& area, int cells) {
  const double step = std::max(area.width, area.height) / cells;
  const auto along = [&](double side) {
    return 1 + std::max(1, static_cast<int>(std::lround(side / step)));
  };
  return {.area = area, .columns = along(area.width), .rows = along(area.height)};
}

double largestOf(const std::vector<double>& values) {
  double largest = std::numeric_limits<double>::quiet_NaN();
  for (const double value : values) {
    if (!std::isnan(value) && !(value <= largest)) {
      largest = value;
    }
  }
  return largest;
}

}  // namespace fisheye_calibration::program
