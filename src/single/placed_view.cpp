#include "single/placed_view.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/core.hpp>

#include "single/record.h"

namespace fisheye_calibration::single {
namespace {

// trunc(size/2 + 1/2): half a pixel right of size/2 if the size is odd.
float renderedCentre(ImageLong size) {
  const ImageLong centre = size / 2 + size % 2;
  return static_cast<float>(centre);
}

// From the bed to the corrected image.
cv::Matx33d bedHomography(const FishEyeCalibrationParam& param, float cx, float cy) {
  const cv::Matx33d R = lens::rotationFromVector(rotationVector(param));
  const cv::Vec3d T = translation(param);
  const cv::Matx33d columns(R(0, 0), R(0, 1), T[0], R(1, 0), R(1, 1), T[1], R(2, 0), R(2, 1), T[2]);
  const cv::Matx33d K(param.fx, param.skewness, cx, 0, param.fy, cy, 0, 0, 1);  // as rendered
  return K * columns;
}

bool allFinite(const cv::Matx33d& matrix) {
  return std::all_of(matrix.val, matrix.val + 9, [](double entry) { return std::isfinite(entry); });
}

}  // namespace

bool isFloat(double value) { return std::abs(value) <= std::numeric_limits<float>::max(); }

cv::Point2d viewCentre(const cv::Point2d& corner, float pixel, ImageLong width, ImageLong height) {
  const double size = pixel;
  return {corner.x + (width * 0.5 + 0.5) * size, corner.y + (height * 0.5 + 0.5) * size};
}

bool placeSecondCorrection(const cv::Point2d& corner, float pixel, ImageLong width,
                           ImageLong height, FishEyeCalibrationParam& param) {
  const cv::Point2d centre = viewCentre(corner, pixel, width, height);
  if (!isFloat(centre.x) || !isFloat(centre.y)) {
    return false;
  }
  const double size = pixel;
  const cv::Point2f datum(static_cast<float>(centre.x), static_cast<float>(centre.y));
  bool regular = false;
  const cv::Matx33d toBed = bedHomography(param, renderedCentre(width), renderedCentre(height))
                                .inv(cv::DECOMP_LU, &regular);
  const cv::Matx33d toGrid(1 / size, 0, width * 0.5 - datum.x / size, 0, 1 / size,
                           height * 0.5 - datum.y / size, 0, 0, 1);
  const cv::Matx33d H = toGrid * toBed;
  const cv::Matx33d scaled = H * (1 / H(2, 2));
  if (!regular || !allFinite(scaled)) {
    return false;
  }
  storeHomography(scaled, param);
  param.Pixel = pixel;
  param.ImageDx = 0;
  param.ImageDy = 0;
  param.DatumPtXw = datum.x;
  param.DatumPtYw = datum.y;
  return true;
}

}  // namespace fisheye_calibration::single
