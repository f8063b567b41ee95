// Finds a chessboard or a grid of circles in a picture.
#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "detection/grid_orientation.h"

namespace fisheye_calibration::program {

enum class TargetKind { kChessboard, kCircles, kAsymmetricCircles };

struct Target {
  TargetKind kind = TargetKind::kChessboard;
  int columns = 0;  // of inner corners, or of circles in a row
  int rows = 0;
};

struct Detection {
  std::vector<GridPoint> grid;  // oriented and ordered by orientGrid()
  std::string method;           // the attempt that found it
};

using Progress = std::function<void(const std::string&)>;

// Tries several methods, from the most exact to the most forgiving, and reports each before it
// starts. Nothing if none finds the whole target with a plausible grid.
std::optional<Detection> detectTarget(const cv::Mat& grey, const Target& target,
                                      const Progress& progress);

// Grid position of a point by its index in the order in which detectors count: (column, row), and
// (2 column + row mod 2, row) for asymmetric circles.
cv::Point2d gridStep(const Target& target, int index);

// False for grids that fold, cross or jump: every cell must turn the same way, and neighbouring
// steps along a row or column must not differ by more than a strongly distorting lens makes them.
bool isPlausibleGrid(const std::vector<cv::Point2f>& points, int columns, int rows);

}  // namespace fisheye_calibration::program
