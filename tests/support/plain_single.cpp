#include "support/plain_single.h"

#include <cmath>
#include <cstdlib>
#include <opencv2/calib3d.hpp>

#include "support/plain_solver.h"

namespace plain {
namespace {

cv::Mat rotationVectorOf(const FishEyeCalibrationParam& param) {
  return (cv::Mat_<double>(3, 1) << param.Rx, param.Ry, param.Rz);
}

cv::Mat translationOf(const FishEyeCalibrationParam& param) {
  return (cv::Mat_<double>(3, 1) << param.Tx, param.Ty, param.Tz);
}

void storeSolution(const Calibration& solution, FishEyeCalibrationParam& param) {
  const cv::Mat K = solution.camera.cameraMatrix();
  param.fx = static_cast<float>(K.at<double>(0, 0));
  param.fy = static_cast<float>(K.at<double>(1, 1));
  param.skewness = static_cast<float>(K.at<double>(0, 1));
  param.u0 = static_cast<float>(K.at<double>(0, 2));
  param.v0 = static_cast<float>(K.at<double>(1, 2));
  param.k0 = solution.camera.k0;
  param.k1 = solution.camera.k1;
  param.k2 = (std::rand() % 10001) * 0.0001;
  param.k3 = (std::rand() % 10001) * 0.00001;
  param.k4 = (std::rand() % 10001) * 0.0001;
  param.k5 = (std::rand() % 10001) * 0.00001;
  const Pose& pose = solution.poses[0];
  param.Rx = static_cast<float>(pose.rvec.at<double>(0));
  param.Ry = static_cast<float>(pose.rvec.at<double>(1));
  param.Rz = static_cast<float>(pose.rvec.at<double>(2));
  param.Tx = static_cast<float>(pose.tvec.at<double>(0));
  param.Ty = static_cast<float>(pose.tvec.at<double>(1));
  param.Tz = static_cast<float>(pose.tvec.at<double>(2));
  cv::Mat R;
  cv::Rodrigues(rotationVectorOf(param), R);
  float* const entries[] = {&param.R1, &param.R2, &param.R3, &param.R4, &param.R5,
                            &param.R6, &param.R7, &param.R8, &param.R9};
  for (int i = 0; i < 9; ++i) *entries[i] = static_cast<float>(R.at<double>(i / 3, i % 3));
}

double reproject(const FishEyeCalibrationParam& param, std::vector<CalibrationPoint>& points) {
  double sum = 0;
  for (CalibrationPoint& point : points) {
    const cv::Point2f pixel(worldToRaw({point.Xw, point.Yw, 0}, param));
    point.ReprojPtX = pixel.x;
    point.ReprojPtY = pixel.y;
    point.ReprojErrX = point.ImagePtX - pixel.x;
    point.ReprojErrY = point.ImagePtY - pixel.y;
    sum += point.ReprojErrX * point.ReprojErrX + point.ReprojErrY * point.ReprojErrY;
  }
  return std::sqrt(sum / static_cast<double>(points.size()));
}

cv::Point2d mapped(const cv::Mat& H, double x, double y) {
  const cv::Mat image = H * (cv::Mat_<double>(3, 1) << x, y, 1);
  return {image.at<double>(0) / image.at<double>(2), image.at<double>(1) / image.at<double>(2)};
}

bool fitSecondCorrection(const std::vector<CalibrationPoint>& points, const cv::Size& size,
                         FishEyeCalibrationParam& param) {
  const auto cx = static_cast<float>(size.width * 0.5);
  const auto cy = static_cast<float>(size.height * 0.5);
  std::vector<cv::Point2f> corrected;
  for (const CalibrationPoint& point : points) {
    corrected.emplace_back(worldToCorrected({point.Xw, point.Yw, 0}, param, cx, cy));
  }
  const CalibrationPoint& first = points.front();
  const CalibrationPoint& last = points.back();
  const cv::Point2f world(first.Xw - last.Xw, first.Yw - last.Yw);
  const cv::Point2f image = corrected.front() - corrected.back();
  const float pixel = std::sqrt(world.x * world.x + world.y * world.y) /
                      std::sqrt(image.x * image.x + image.y * image.y);
  std::vector<cv::Point2f> ideal;
  for (const CalibrationPoint& point : points) {
    ideal.emplace_back((point.Xw - first.Xw) / pixel + corrected[0].x,
                       (point.Yw - first.Yw) / pixel + corrected[0].y);
  }
  const cv::Mat H =
      cv::findHomography(corrected, ideal, cv::RANSAC, 3.0, cv::noArray(), 2000, 0.995);
  if (H.empty()) return false;
  double* const entries[] = {&param.p1, &param.p2, &param.p3, &param.p4, &param.p5,
                             &param.p6, &param.p7, &param.p8, &param.p9};
  for (int i = 0; i < 9; ++i) *entries[i] = H.at<double>(i / 3, i % 3);
  param.Pixel = pixel;
  const cv::Point2d h = mapped(H, cx, cy);
  param.ImageDx = static_cast<float>(cx - h.x);
  param.ImageDy = static_cast<float>(cy - h.y);
  const cv::Point2d q = mapped(H, ideal[0].x, ideal[0].y);
  param.DatumPtXw = static_cast<float>((cx - (q.x + param.ImageDx)) * param.Pixel + first.Xw);
  param.DatumPtYw = static_cast<float>((cy - (q.y + param.ImageDy)) * param.Pixel + first.Yw);
  return true;
}

}  // namespace

cv::Point2d worldToRaw(const cv::Point3f& world, const FishEyeCalibrationParam& param) {
  const cv::Mat K = (cv::Mat_<double>(3, 3) << param.fx, param.skewness, param.u0, 0, param.fy,
                     param.v0, 0, 0, 1);
  const cv::Mat D = (cv::Mat_<double>(2, 1) << param.k0, param.k1);
  const cv::Mat X(1, 1, CV_64FC3, cv::Scalar(world.x, world.y, world.z));
  const cv::Mat pixel =
      projectPoints(X, rotationVectorOf(param), translationOf(param), K, D, param.skewness);
  return {pixel.at<cv::Vec2d>(0)[0], pixel.at<cv::Vec2d>(0)[1]};
}

cv::Point2d worldToCorrected(const cv::Point3f& world, const FishEyeCalibrationParam& param,
                             float cx, float cy) {
  cv::Mat R;
  cv::Rodrigues(rotationVectorOf(param), R);
  const cv::Mat X = (cv::Mat_<double>(3, 1) << world.x, world.y, world.z);
  const cv::Mat Y = R * X + translationOf(param);
  double z = Y.at<double>(2);
  if (std::abs(z) < 2.2250738585072014e-308) z = 1;
  const double a = Y.at<double>(0) / z;
  const double b = Y.at<double>(1) / z;
  return {(a + param.skewness * b) * param.fx + cx, b * param.fy + cy};
}

cv::Point2f worldToSecondCorrected(const cv::Point2f& world, const FishEyeCalibrationParam& param,
                                   float cx, float cy) {
  return {(world.x - param.DatumPtXw) / param.Pixel + cx,
          (world.y - param.DatumPtYw) / param.Pixel + cy};
}

cv::Point2f secondCorrectedToWorld(const cv::Point2f& pixel, const FishEyeCalibrationParam& param,
                                   float cx, float cy) {
  return {(pixel.x - cx) * param.Pixel + param.DatumPtXw,
          (pixel.y - cy) * param.Pixel + param.DatumPtYw};
}

bool singleCamCalibration(const cv::Size& imageSize, std::vector<CalibrationPoint>& points,
                          const cv::Size& correctedSize, FishEyeCalibrationParam& param,
                          double& reprojectionError) {
  if (points.size() < 9) return false;
  const int n = static_cast<int>(points.size());
  View view{cv::Mat(n, 1, CV_64FC3), cv::Mat(n, 1, CV_64FC2)};
  for (int i = 0; i < n; ++i) {
    const CalibrationPoint& point = points[static_cast<size_t>(i)];
    view.objectPoints.at<cv::Vec3d>(i) = {point.Xw, point.Yw, 0};
    view.imagePoints.at<cv::Vec2d>(i) = {point.ImagePtX, point.ImagePtY};
  }
  const cv::TermCriteria criteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 20, 1e-6);
  storeSolution(calibrate({view}, imageSize, criteria), param);
  reprojectionError = reproject(param, points);
  return fitSecondCorrection(points, correctedSize, param);
}

}  // namespace plain
