#include "calibration/bed_motion.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <opencv2/core/types.hpp>
#include <optional>

#include "base/failure.h"
#include "geometry/target_points.h"
#include "robust/viewing_ray.h"
#include "single/record.h"

namespace fisheye_calibration::program {
namespace {

struct PlacedPoint {
  cv::Point2d bed;     // its known place
  cv::Point2d placed;  // by the record
};

std::vector<PlacedPoint> placedPoints(const FishEyeCalibrationParam& record, const TargetView& view,
                                      const std::vector<std::size_t>& leftOut) {
  const lens::Camera camera = single::rawCamera(record);
  const lens::Pose pose{single::rotationVector(record), single::translation(record)};
  std::vector<PlacedPoint> points;
  for (std::size_t i = 0; i < view.points.size(); ++i) {
    if (std::find(leftOut.begin(), leftOut.end(), i) != leftOut.end()) {
      continue;
    }
    const auto placed = robust::bedPointOf(camera, pose, imagePosition(view.points[i]));
    if (!placed) {
      failJob(view.name + ": the camera file does not see the bed at point " +
              std::to_string(view.points[i].PointId));
    }
    points.push_back({bedPosition(view.points[i]), *placed});
  }
  return points;
}

}  // namespace

BedMotion motionSince(const FishEyeCalibrationParam& record, const TargetView& view,
                      const Size& image) {
  const RobustRequest request{
      .views = {view},
      .image = image,
      .picture = {.size = image},
      .lens = robust::HeldLens{single::rawCamera(record), cv::Matx66d::zeros()}};
  const RobustCamera robust = solveRobustly(request);
  const std::vector<PlacedPoint> points =
      placedPoints(record, view, robust.solved.wrongPoints.front());
  const double count = static_cast<double>(points.size());
  cv::Point2d bedMean;
  cv::Point2d placedMean;
  for (const PlacedPoint& point : points) {
    bedMean += point.bed / count;
    placedMean += point.placed / count;
  }
  // The turn that brings the points closest: tan = sum of cross / sum of dot products.
  double cross = 0;
  double dot = 0;
  BedMotion motion;
  for (const PlacedPoint& point : points) {
    const cv::Point2d a = point.bed - bedMean;
    const cv::Point2d b = point.placed - placedMean;
    cross += a.cross(b);
    dot += a.dot(b);
    motion.largest = std::max(motion.largest, cv::norm(point.placed - point.bed));
  }
  motion.shift = cv::norm(placedMean - bedMean);
  motion.turnDegrees = std::atan2(cross, dot) * 180 / std::numbers::pi;
  motion.wrongIds = wrongIds(robust.solved, request.views, 0);
  return motion;
}

}  // namespace fisheye_calibration::program
