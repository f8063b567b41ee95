#include "detection/plausible_grid.h"

#include <algorithm>
#include <cstddef>

namespace fisheye_calibration::program {
namespace {

constexpr double kLargestStepChange = 0.6;  // of the larger of two neighbouring steps

}  // namespace

bool isPlausibleGrid(const std::vector<cv::Point2f>& points, int columns, int rows) {
  const auto at = [&](int c, int r) {
    return cv::Point2d(points[static_cast<std::size_t>(r * columns + c)]);
  };
  const auto evenSteps = [](const cv::Point2d& a, const cv::Point2d& b, const cv::Point2d& c) {
    const double larger = std::max(cv::norm(b - a), cv::norm(c - b));
    return cv::norm((c - b) - (b - a)) < kLargestStepChange * larger;
  };
  int sense = 0;
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < columns; ++c) {
      if (c + 2 < columns && !evenSteps(at(c, r), at(c + 1, r), at(c + 2, r))) {
        return false;
      }
      // Every second row of a staggered grid is shifted, so rows are compared two by two.
      if (r + 4 < rows && !evenSteps(at(c, r), at(c, r + 2), at(c, r + 4))) {
        return false;
      }
      if (c + 1 >= columns || r + 1 >= rows) {
        continue;
      }
      const double area = (at(c + 1, r) - at(c, r)).cross(at(c, r + 1) - at(c, r));
      const int turn = area > 0 ? 1 : -1;
      if (area == 0 || (sense != 0 && turn != sense)) {
        return false;
      }
      sense = turn;
    }
  }
  return true;
}

}  // namespace fisheye_calibration::program
