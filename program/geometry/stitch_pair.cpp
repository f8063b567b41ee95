#include "geometry/stitch_pair.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "geometry/conversions.h"
#include "geometry/target_points.h"

namespace fisheye_calibration::program {

SharedPoints sharedPoints(const StitchPair& pair) {
  SharedPoints shared;
  const int idCount = static_cast<int>(pair.left.points.size() + pair.right.points.size());
  GetCommonPoints(pair.left.points, pair.right.points, idCount, shared.left, shared.right);
  return shared;
}

std::array<std::size_t, 4> cornerPoints(const SharedPoints& shared) {
  // The library expects world coordinates within 0...10000: box and distances start from there.
  constexpr float kWorldLimit = 10000;
  float minX = kWorldLimit;
  float minY = kWorldLimit;
  float maxX = 0;
  float maxY = 0;
  for (const CalibrationPoint& point : shared.left) {
    minX = std::min(minX, point.Xw);
    minY = std::min(minY, point.Yw);
    maxX = std::max(maxX, point.Xw);
    maxY = std::max(maxY, point.Yw);
  }
  const std::array<cv::Point2f, 4> corners = {
      {{minX, minY}, {maxX, minY}, {minX, maxY}, {maxX, maxY}}};
  std::array<std::size_t, 4> chosen{};
  for (std::size_t k = 0; k < corners.size(); ++k) {
    float best = kWorldLimit;
    for (std::size_t i = 0; i < shared.left.size(); ++i) {
      // As the library computes it: hypot rounds differently and so decides ties differently.
      const float dx = shared.left[i].Xw - corners[k].x;
      const float dy = shared.left[i].Yw - corners[k].y;
      const float distance = std::sqrt(dx * dx + dy * dy);
      if (distance < best) {
        best = distance;
        chosen[k] = i;
      }
    }
  }
  return chosen;
}

cv::Matx33d viewTransform(const StitchPair& pair, const SharedPoints& shared) {
  const cv::Point2f centre = centreOf(pair.left.viewSize());
  std::array<cv::Point2f, 4> from;
  std::array<cv::Point2f, 4> to;
  const std::array<std::size_t, 4> corners = cornerPoints(shared);
  for (std::size_t k = 0; k < corners.size(); ++k) {
    const std::size_t i = corners[k];
    from[k] = secondCorrectedPosition(pair.left.param, bedPosition(shared.left[i]), centre);
    to[k] = secondCorrectedPosition(pair.right.param, bedPosition(shared.right[i]), centre);
  }
  return cv::getPerspectiveTransform(from.data(), to.data(), cv::DECOMP_LU);
}

cv::Point2d applied(const cv::Matx33d& transform, cv::Point2d point) {
  const cv::Vec3d mapped = transform * cv::Vec3d(point.x, point.y, 1);
  return {mapped[0] / mapped[2], mapped[1] / mapped[2]};
}

}  // namespace fisheye_calibration::program
