#include <cmath>
#include <cstdlib>

#include "fisheye/fisheye.h"
#include "fisheye_calibration.h"
#include "platform/message_box.h"
#include "single/record.h"
#include "single/second_correction.h"

namespace {

constexpr std::size_t kFewestPoints = 9;
constexpr int kSolverFlags = 10;
constexpr int kSolverIterations = 20;
constexpr double kSolverEpsilon = 1e-6;

// What the solver finds from one view.
struct Solution {
  cv::Matx33d K;
  cv::Vec2d D;
  std::vector<cv::Vec3d> rotations = std::vector<cv::Vec3d>(1);
  std::vector<cv::Vec3d> translations = std::vector<cv::Vec3d>(1);
};

Solution solve(const std::vector<CalibrationPoint>& points, const cv::Size& imageSize) {
  std::vector<std::vector<cv::Point3f>> worldViews(1);
  std::vector<std::vector<cv::Point2f>> imageViews(1);
  for (const CalibrationPoint& point : points) {
    worldViews[0].emplace_back(point.Xw, point.Yw, 0.0F);
    imageViews[0].emplace_back(point.ImagePtX, point.ImagePtY);
  }
  Solution solution;
  fisheye::calibrate(worldViews, imageViews, imageSize, solution.K, solution.D, solution.rotations,
                     solution.translations, kSolverFlags,
                     cv::TermCriteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS,
                                      kSolverIterations, kSolverEpsilon));
  return solution;
}

// k2...k5 carry nothing; hosts expect them filled from the C runtime's generator, in this order.
void storeFiller(FishEyeCalibrationParam& param) {
  constexpr int modulus = 10001;
  param.k2 = std::rand() % modulus * 0.0001;
  param.k3 = std::rand() % modulus * 0.00001;
  param.k4 = std::rand() % modulus * 0.0001;
  param.k5 = std::rand() % modulus * 0.00001;
}

void storeRotationMatrix(FishEyeCalibrationParam& param) {
  const cv::Matx33d R = fisheye::rotationFromVector(single::rotationVector(param));
  float* const fields[] = {&param.R1, &param.R2, &param.R3, &param.R4, &param.R5,
                           &param.R6, &param.R7, &param.R8, &param.R9};
  for (int i = 0; i < 9; ++i) {
    *fields[i] = static_cast<float>(R.val[i]);
  }
}

void storeSolution(const Solution& solution, FishEyeCalibrationParam& param) {
  param.fx = static_cast<float>(solution.K(0, 0));
  param.fy = static_cast<float>(solution.K(1, 1));
  param.skewness = static_cast<float>(solution.K(0, 1));
  param.u0 = static_cast<float>(solution.K(0, 2));
  param.v0 = static_cast<float>(solution.K(1, 2));
  param.k0 = solution.D[0];
  param.k1 = solution.D[1];
  storeFiller(param);
  const cv::Vec3d& om = solution.rotations.front();
  param.Rx = static_cast<float>(om[0]);
  param.Ry = static_cast<float>(om[1]);
  param.Rz = static_cast<float>(om[2]);
  const cv::Vec3d& T = solution.translations.front();
  param.Tx = static_cast<float>(T[0]);
  param.Ty = static_cast<float>(T[1]);
  param.Tz = static_cast<float>(T[2]);
  storeRotationMatrix(param);
}

// Projects every point with the stored record, as hosts will, writes where it lands and how far off
// it is, and returns sqrt(sum(du^2 + dv^2)/n).
double reproject(const FishEyeCalibrationParam& param, std::vector<CalibrationPoint>& points) {
  const fisheye::Camera camera = single::rawCamera(param);
  const cv::Matx33d R = fisheye::rotationFromVector(single::rotationVector(param));
  const cv::Vec3d T = single::translation(param);
  double squares = 0;
  for (CalibrationPoint& point : points) {
    const cv::Point2f projected = fisheye::projectPoint(camera, R, T, {point.Xw, point.Yw, 0});
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

bool SingleCamCalibration(unsigned char* /*image*/, ImageLong width, ImageLong height,
                          int /*bitCount*/, std::vector<CalibrationPoint>& points,
                          ImageLong correctedWidth, ImageLong correctedHeight,
                          FishEyeCalibrationParam& param, double& reprojectionError) {
  if (points.size() < kFewestPoints) {
    platform::showMessage("特征点少于9个点，无法完成标定！");
    return false;
  }
  storeSolution(solve(points, cv::Size(static_cast<int>(width), static_cast<int>(height))), param);
  reprojectionError = reproject(param, points);
  return single::fitSecondCorrection(points, correctedWidth, correctedHeight, param);
}
