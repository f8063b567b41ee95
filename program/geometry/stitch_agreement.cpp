#include "geometry/stitch_agreement.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>

#include "geometry/conversions.h"
#include "geometry/metric_picture.h"
#include "geometry/raw_ray.h"
#include "geometry/second_view.h"
#include "geometry/target_points.h"

namespace fisheye_calibration::program {
namespace {

// Where the view of a camera renders the pixel at which it measured the point.
std::optional<cv::Point2d> viewPosition(const StitchCamera& camera, const CalibrationPoint& point) {
  const cv::Point2d centre = centreOf(camera.viewSize());
  const auto corrected = correctedPositionOf(camera.param, imagePosition(point), centre);
  if (!corrected) {
    return std::nullopt;
  }
  const cv::Point2d position = secondCorrected(camera.param, *corrected);
  if (!std::isfinite(position.x) || !std::isfinite(position.y)) {
    return std::nullopt;
  }
  return position;
}

double rawError(const StitchCamera& camera, const CalibrationPoint& point) {
  const cv::Point2f miss = imagePosition(point) - rawPosition(camera.param, bedPosition(point));
  return static_cast<double>(std::hypot(miss.x, miss.y));
}

}  // namespace

std::vector<Agreement> agreementAt(const StitchPair& pair, const SharedPoints& shared,
                                   const DualFishEyeCalibrationParam& dual) {
  const cv::Matx33d back = viewTransform(pair, shared).inv();
  const cv::Point2d offset(0, (dual.StdImageHeight - pair.left.viewSize().height) * 0.5);
  const MetricPicture canvas = metricPicture(dual);
  std::vector<Agreement> agreement;
  for (std::size_t i = 0; i < shared.left.size(); ++i) {
    const auto inLeft = viewPosition(pair.left, shared.left[i]);
    const auto inRight = viewPosition(pair.right, shared.right[i]);
    if (!inLeft || !inRight) {
      continue;
    }
    const cv::Point2d left = *inLeft + offset;
    const cv::Point2d right = applied(back, *inRight) + offset;
    const cv::Point2d bed = canvas.positionOf(bedPosition(shared.left[i]));
    agreement.push_back({.pointId = shared.left[i].PointId,
                         .left = left,
                         .right = right,
                         .apart = cv::norm(left - right),
                         .leftError = cv::norm(left - bed),
                         .rightError = cv::norm(right - bed),
                         .leftRaw = rawError(pair.left, shared.left[i]),
                         .rightRaw = rawError(pair.right, shared.right[i])});
  }
  return agreement;
}

double rootMeanSquare(const std::vector<Agreement>& agreement, double Agreement::*error) {
  double sum = 0;
  for (const Agreement& at : agreement) {
    sum += at.*error * at.*error;
  }
  return std::sqrt(sum / static_cast<double>(agreement.size()));
}

double worstApart(const std::vector<Agreement>& agreement) {
  double worst = 0;
  for (const Agreement& at : agreement) {
    if (std::isnan(at.apart)) {
      return at.apart;
    }
    worst = std::max(worst, at.apart);
  }
  return worst;
}

}  // namespace fisheye_calibration::program
