#include <cmath>
#include <cstdlib>

#include "fisheye_calibration.h"
#include "platform/message_box.h"
#include "single/record.h"
#include "single/second_correction.h"
#include "solver/calibration.h"

namespace fisheye_calibration::single {
namespace {

constexpr std::size_t kFewestPoints = 9;  // fewer show a message (compatibility 13)
constexpr int kMostSteps = 20;
constexpr double kSmallestChange = 1e-6;

// The points as the solver's only view.
solver::ViewPoints viewOf(const std::vector<CalibrationPoint>& points) {
  solver::ViewPoints view;
  for (const CalibrationPoint& point : points) {
    view.X.push_back(point.Xw);
    view.Y.push_back(point.Yw);
    view.Z.push_back(0);
    view.image.x.push_back(point.ImagePtX);
    view.image.y.push_back(point.ImagePtY);
  }
  return view;
}

// k2...k5 have no meaning; hosts expect them filled from the C runtime's rand(), in this order
// (compatibility 14).
void storeFiller(FishEyeCalibrationParam& param) {
  constexpr int kModulus = 10001;
  param.k2 = std::rand() % kModulus * 0.0001;
  param.k3 = std::rand() % kModulus * 0.00001;
  param.k4 = std::rand() % kModulus * 0.0001;
  param.k5 = std::rand() % kModulus * 0.00001;
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
}  // namespace fisheye_calibration::single

using namespace fisheye_calibration;
using namespace fisheye_calibration::single;

// The picture and its bit count are not used (compatibility 15). If no second correction is found,
// the results up to there have been stored all the same (compatibility 17).
bool SingleCamCalibration(unsigned char* /*image*/, ImageLong width, ImageLong height,
                          int /*bitCount*/, std::vector<CalibrationPoint>& points,
                          ImageLong correctedWidth, ImageLong correctedHeight,
                          FishEyeCalibrationParam& param, double& reprojectionError) {
  if (points.size() < kFewestPoints) {
    platform::showMessage("特征点少于9个点，无法完成标定！");
    return false;
  }
  const solver::Calibration solved =
      solver::calibrate({viewOf(points)}, cv::Size(width, height),
                        cv::TermCriteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS,
                                         kMostSteps, kSmallestChange));
  storeCamera(solved.camera, param);
  storeFiller(param);
  storePose(solved.poses.front(), param);
  reprojectionError = reproject(param, points);
  return fitSecondCorrection(points, correctedWidth, correctedHeight, param);
}
