// Finds a target in a picture. Each kind has a finder in a file of its own.
#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "detection/grid_orientation.h"

namespace fisheye_calibration::program {

enum class TargetKind { kChessboard, kCharuco, kCircles, kAsymmetricCircles };

struct Target {
  TargetKind kind = TargetKind::kChessboard;
  int columns = 0;  // of inner corners, or of circles in a row
  int rows = 0;
  int markerBits = 5;        // of kCharuco: modules on each side of a marker
  double markerShare = 0.7;  // of kCharuco: the marker's side as a share of the square's

  bool operator==(const Target&) const = default;
};

struct Detection {
  // The whole target, oriented and ordered by orientGrid(); of kCharuco what is in view, in the
  // target's own orientation.
  std::vector<GridPoint> grid;
  std::string method;  // the attempt that found it
};

struct Search {
  std::optional<Detection> detection;
  std::string seen;  // without a detection: what is there instead, in words; empty if nothing is
};

using Progress = std::function<void(const std::string&)>;

// Tries several methods, from the most exact to the most forgiving, and reports each before it
// starts. Chessboards are found only if they are whole and have exactly the size asked for.
Search detectTarget(const cv::Mat& grey, const Target& target, const Progress& progress);

}  // namespace fisheye_calibration::program
