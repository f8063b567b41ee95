#include "single/second_correction.h"

#include <cmath>
#include <opencv2/calib3d.hpp>

#include "single/record.h"

namespace fisheye_calibration::single {
namespace {

constexpr double kReprojectionThreshold = 3.0;  // pixels
constexpr int kMaxIterations = 2000;
constexpr double kConfidence = 0.995;

// The positions of the world points in the corrected image.
std::vector<cv::Point2f> correctedPositions(const std::vector<CalibrationPoint>& points,
                                            const FishEyeCalibrationParam& param, float cx,
                                            float cy) {
  std::vector<cv::Point2f> positions;
  positions.reserve(points.size());
  const lens::Camera camera = correctedCamera(param, cx, cy);
  const cv::Matx33d R = lens::rotationFromVector(rotationVector(param));
  const cv::Vec3d T = translation(param);
  for (const CalibrationPoint& point : points) {
    positions.emplace_back(lens::projectPinhole(camera, R, T, {point.Xw, point.Yw, 0}));
  }
  return positions;
}

float length(float dx, float dy) { return std::sqrt(dx * dx + dy * dy); }

cv::Point2d apply(const cv::Matx33d& H, double x, double y) {
  const cv::Vec3d p = H * cv::Vec3d(x, y, 1);
  return {p[0] / p[2], p[1] / p[2]};
}

}  // namespace

bool fitSecondCorrection(const std::vector<CalibrationPoint>& points, ImageLong correctedWidth,
                         ImageLong correctedHeight, FishEyeCalibrationParam& param) {
  const auto cx = static_cast<float>(correctedWidth * 0.5);
  const auto cy = static_cast<float>(correctedHeight * 0.5);
  const std::vector<cv::Point2f> corrected = correctedPositions(points, param, cx, cy);
  const CalibrationPoint& first = points.front();
  const CalibrationPoint& last = points.back();
  const cv::Point2f anchor = corrected.front();
  const float pixel = length(first.Xw - last.Xw, first.Yw - last.Yw) /
                      length(anchor.x - corrected.back().x, anchor.y - corrected.back().y);

  std::vector<cv::Point2f> ideal;
  ideal.reserve(points.size());
  for (const CalibrationPoint& point : points) {
    ideal.emplace_back((point.Xw - first.Xw) / pixel + anchor.x,
                       (point.Yw - first.Yw) / pixel + anchor.y);
  }
  const cv::Mat found = cv::findHomography(corrected, ideal, cv::RANSAC, kReprojectionThreshold,
                                           cv::noArray(), kMaxIterations, kConfidence);
  if (found.empty()) {
    return false;
  }

  const cv::Matx33d H = found;
  storeHomography(H, param);
  param.Pixel = pixel;
  const cv::Point2d centre = apply(H, cx, cy);
  param.ImageDx = static_cast<float>(cx - centre.x);
  param.ImageDy = static_cast<float>(cy - centre.y);
  const cv::Point2d firstIdeal = apply(H, ideal.front().x, ideal.front().y);
  param.DatumPtXw =
      static_cast<float>((cx - (firstIdeal.x + param.ImageDx)) * param.Pixel + first.Xw);
  param.DatumPtYw =
      static_cast<float>((cy - (firstIdeal.y + param.ImageDy)) * param.Pixel + first.Yw);
  return true;
}

}  // namespace fisheye_calibration::single
