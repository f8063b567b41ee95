#include "detection/target_places.h"

namespace fisheye_calibration::program {

cv::Point2f World::at(cv::Point2d steps) const {
  // In doubles, and rounded to the record's floats once.
  const auto onBed = [&](float start, double count) {
    return static_cast<float>(static_cast<double>(start) + static_cast<double>(spacing) * count);
  };
  return {onBed(origin.first, steps.x), onBed(origin.second, steps.y)};
}

std::string describeTarget(const Target& target) {
  const std::string size = std::to_string(target.columns) + " x " + std::to_string(target.rows);
  switch (target.kind) {
    case TargetKind::kChessboard:
      return size + " inner corners";
    case TargetKind::kCharuco:
      return size + " inner corners and markers";
    case TargetKind::kCircles:
      return size + " circles";
    case TargetKind::kAsymmetricCircles:
      break;
  }
  return size + " staggered circles";
}

std::vector<CalibrationPoint> numberedPoints(const std::vector<GridPoint>& grid,
                                             const World& world) {
  std::vector<CalibrationPoint> points;
  for (const GridPoint& position : grid) {
    const cv::Point2f onBed = world.at(position.world);
    points.push_back({.PointId = world.firstId + position.index,
                      .Xw = onBed.x,
                      .Yw = onBed.y,
                      .ImagePtX = position.image.x,
                      .ImagePtY = position.image.y});
  }
  return points;
}

}  // namespace fisheye_calibration::program
