#include "single/completed_record.h"

#include <cmath>

#include "single/record.h"
#include "single/second_correction.h"

namespace fisheye_calibration::single {
namespace {

// Hosts expect the random numbers in this order (compatibility 14).
void storeFiller(Filler filler, FishEyeCalibrationParam& param) {
  if (filler == kZeroFiller) {
    param.k2 = param.k3 = param.k4 = param.k5 = 0;
    return;
  }
  constexpr int kModulus = 10001;
  param.k2 = filler() % kModulus * 0.0001;
  param.k3 = filler() % kModulus * 0.00001;
  param.k4 = filler() % kModulus * 0.0001;
  param.k5 = filler() % kModulus * 0.00001;
}

// Projects every point with the stored record, as hosts will, stores the projection and its error
// in the point and returns sqrt(sum(du^2 + dv^2)/n).
double reproject(const FishEyeCalibrationParam& param, std::vector<CalibrationPoint>& points) {
  const lens::Camera camera = rawCamera(param);
  const cv::Matx33d R = lens::rotationFromVector(rotationVector(param));
  const cv::Vec3d T = translation(param);
  double squares = 0;
  for (CalibrationPoint& point : points) {
    const cv::Point2f projected = lens::projectPoint(camera, R, T, {point.Xw, point.Yw, 0});
    const float errorX = point.ImagePtX - projected.x;
    const float errorY = point.ImagePtY - projected.y;
    point.ReprojPtX = projected.x;
    point.ReprojPtY = projected.y;
    point.ReprojErrX = errorX;
    point.ReprojErrY = errorY;
    squares += point.ReprojErrX * point.ReprojErrX + point.ReprojErrY * point.ReprojErrY;
  }
  return std::sqrt(squares / static_cast<double>(points.size()));
}

}  // namespace

bool completeRecord(const lens::Camera& camera, const lens::Pose& pose,
                    std::vector<CalibrationPoint>& points, ImageLong correctedWidth,
                    ImageLong correctedHeight, FishEyeCalibrationParam& param,
                    double& reprojectionError, Filler filler) {
  storeCamera(camera, param);
  storeFiller(filler, param);
  storePose(pose, param);
  reprojectionError = reproject(param, points);
  return fitSecondCorrection(points, correctedWidth, correctedHeight, param);
}

}  // namespace fisheye_calibration::single
