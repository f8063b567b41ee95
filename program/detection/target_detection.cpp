#include "detection/target_detection.h"

#include "detection/charuco_finder.h"
#include "detection/chessboard_finder.h"
#include "detection/circle_finder.h"

namespace fisheye_calibration::program {

Search detectTarget(const cv::Mat& grey, const Target& target, const Progress& progress) {
  switch (target.kind) {
    case TargetKind::kChessboard:
      return findChessboard(grey, target, progress);
    case TargetKind::kCharuco:
      return findCharuco(grey, target, progress);
    case TargetKind::kCircles:
    case TargetKind::kAsymmetricCircles:
      return findCircleGrid(grey, target, progress);
  }
  return {};
}

}  // namespace fisheye_calibration::program
