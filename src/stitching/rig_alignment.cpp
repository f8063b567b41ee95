#include "stitching/rig_alignment.h"

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "stitching/saturation.h"

namespace fisheye_calibration::stitching {
namespace {

// World coordinates are expected within 0...10000; the searches start from there (compatibility
// 48).
constexpr float kBeyondTheBed = 10000.0F;

float distance(const CalibrationPoint& point, float x, float y) {
  const float dx = point.Xw - x;
  const float dy = point.Yw - y;
  return std::sqrt(dx * dx + dy * dy);
}

std::size_t nearest(const std::vector<CalibrationPoint>& points, float x, float y) {
  std::size_t best = 0;
  float least = kBeyondTheBed;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const float d = distance(points[i], x, y);
    if (d < least) {
      least = d;
      best = i;
    }
  }
  return best;
}

std::array<std::size_t, 4> nearestToCorners(const std::vector<CalibrationPoint>& points) {
  float minX = kBeyondTheBed;
  float minY = kBeyondTheBed;
  float maxX = 0;
  float maxY = 0;
  for (const CalibrationPoint& point : points) {
    if (point.Xw < minX) {
      minX = point.Xw;
    }
    if (point.Yw < minY) {
      minY = point.Yw;
    }
    if (point.Xw > maxX) {
      maxX = point.Xw;
    }
    if (point.Yw > maxY) {
      maxY = point.Yw;
    }
  }
  return {nearest(points, minX, minY), nearest(points, maxX, minY), nearest(points, minX, maxY),
          nearest(points, maxX, maxY)};
}

}  // namespace

std::optional<CornerPairs> cornerPairs(const CameraInput& first, const CameraInput& second) {
  std::vector<CalibrationPoint> firstCommon;
  std::vector<CalibrationPoint> secondCommon;
  const auto idCount = static_cast<std::int64_t>(first.points.size() + second.points.size());
  GetCommonPoints(first.points, second.points, saturated(idCount), firstCommon, secondCommon);
  if (firstCommon.empty() || firstCommon.size() != secondCommon.size()) {
    return std::nullopt;
  }
  CornerPairs pairs;
  const std::array<std::size_t, 4> corners = nearestToCorners(firstCommon);
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const CalibrationPoint& a = firstCommon[corners[i]];
    const CalibrationPoint& b = secondCommon[corners[i]];
    pairs.first[i] = {a.Xw, a.Yw};
    pairs.second[i] = {b.Xw, b.Yw};
  }
  return pairs;
}

cv::Point2f viewPixel(const cv::Point2f& world, const FishEyeCalibrationParam& param,
                      const cv::Size2d& half, const std::optional<double>& lastRow) {
  const double u = (world.x - param.DatumPtXw) / param.Pixel + half.width;
  const double v = (world.y - param.DatumPtYw) / param.Pixel + half.height;
  return {static_cast<float>(u), static_cast<float>(lastRow ? *lastRow - v : v)};
}

cv::Matx33d firstToSecond(const CornerPairs& pairs, const CameraInput& first,
                          const CameraInput& second, Rows rows) {
  // For both cameras (compatibility 49).
  const cv::Size2d half(doubledWidth(first) * 0.5, doubledHeight(first) * 0.5);
  const auto lastRow = [rows](const CameraInput& camera) -> std::optional<double> {
    return rows == Rows::kBuffer ? std::optional(doubledHeight(camera) - 1.0) : std::nullopt;
  };
  std::array<cv::Point2f, 4> from;
  std::array<cv::Point2f, 4> to;
  for (std::size_t i = 0; i < from.size(); ++i) {
    from[i] = viewPixel(pairs.first[i], first.param, half, lastRow(first));
    to[i] = viewPixel(pairs.second[i], second.param, half, lastRow(second));
  }
  return cv::getPerspectiveTransform(from.data(), to.data(), cv::DECOMP_LU);
}

}  // namespace fisheye_calibration::stitching
