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

cv::Rect2d boxAround(const std::vector<cv::Point2d>& points) {
  cv::Point2d least = points.front();
  cv::Point2d most = least;
  for (const cv::Point2d& point : points) {
    least = {std::min(least.x, point.x), std::min(least.y, point.y)};
    most = {std::max(most.x, point.x), std::max(most.y, point.y)};
  }
  return {least, most};
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
