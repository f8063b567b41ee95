// Values on a regular grid of bed points.
#pragma once

#include <cstddef>
#include <opencv2/core/types.hpp>
#include <vector>

namespace fisheye_calibration::program {

// The grid's corners are those of the area, which is given in world units.
struct BedGrid {
  cv::Rect2d area;
  int columns = 2;  // at least 2
  int rows = 2;

  cv::Point2d pointAt(int column, int row) const {
    return {area.x + area.width * column / (columns - 1), area.y + area.height * row / (rows - 1)};
  }

  // Row by row, like the values that belong to them.
  std::vector<cv::Point2d> points() const {
    std::vector<cv::Point2d> all;
    all.reserve(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
    for (int row = 0; row < rows; ++row) {
      for (int column = 0; column < columns; ++column) {
        all.push_back(pointAt(column, row));
      }
    }
    return all;
  }
};

// A grid of about `cells` squares along the longer side of the area.
BedGrid gridOver(const cv::Rect2d& area, int cells);

// The smallest box with all of the points, of which there is at least one.
cv::Rect2d boxAround(const std::vector<cv::Point2d>& points);

// The largest value that is a number; NaN if there is none.
double largestOf(const std::vector<double>& values);

}  // namespace fisheye_calibration::program
