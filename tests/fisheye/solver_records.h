// Conversions between the plain derivation's types and the library's.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "fisheye/internal.h"
#include "support/plain_solver.h"
#include "support/synthetic_rig.h"

namespace support {

inline fisheye_calibration::internal::IntrinsicParams intrinsicParams(
    const plain::Intrinsics& camera) {
  fisheye_calibration::internal::IntrinsicParams params;
  params.focalLength = {camera.focalX, camera.focalY};
  params.principalPoint = {camera.principalX, camera.principalY};
  params.skew = camera.skew;
  params.distortion = {camera.k0, camera.k1};
  for (size_t i = 0; i < 7; ++i) params.estimateMask[i] = camera.estimated[i] ? 1 : 0;
  return params;
}

inline fisheye_calibration::internal::IntrinsicParams intrinsicParams(const RigCamera& camera) {
  return intrinsicParams(plainIntrinsics(camera));
}

// All seven numbers as a column, in the fixed order.
inline cv::Mat columnOf(const fisheye_calibration::internal::IntrinsicParams& p) {
  return (cv::Mat_<double>(7, 1) << p.focalLength[0], p.focalLength[1], p.principalPoint[0],
          p.principalPoint[1], p.skew, p.distortion[0], p.distortion[1]);
}

inline cv::Mat columnOf(const plain::Intrinsics& p) {
  return (cv::Mat_<double>(7, 1) << p.focalX, p.focalY, p.principalX, p.principalY, p.skew, p.k0,
          p.k1);
}

inline std::vector<cv::Mat> objectMats(const std::vector<plain::View>& views) {
  std::vector<cv::Mat> mats;
  for (const plain::View& view : views) mats.push_back(view.objectPoints);
  return mats;
}

inline std::vector<cv::Mat> imageMats(const std::vector<plain::View>& views) {
  std::vector<cv::Mat> mats;
  for (const plain::View& view : views) mats.push_back(view.imagePoints);
  return mats;
}

inline std::vector<cv::Vec3d> rotationsOf(const std::vector<plain::Pose>& poses) {
  std::vector<cv::Vec3d> all;
  for (const plain::Pose& pose : poses) all.emplace_back(pose.rvec.ptr<double>());
  return all;
}

inline std::vector<cv::Vec3d> translationsOf(const std::vector<plain::Pose>& poses) {
  std::vector<cv::Vec3d> all;
  for (const plain::Pose& pose : poses) all.emplace_back(pose.tvec.ptr<double>());
  return all;
}

inline std::vector<plain::Pose> truePoses(const Rig& rig) {
  std::vector<plain::Pose> poses;
  for (const RigView& view : rig.views) poses.push_back(plainPose(view.pose));
  return poses;
}

// |a - b| / |b| over all elements; infinite if the sizes differ or a is NaN.
inline double relativeDistance(const cv::Mat& a, const cv::Mat& b) {
  if (a.size() != b.size() || a.type() != b.type()) return HUGE_VAL;
  const double distance = cv::norm(a, b, cv::NORM_L2);
  const double length = cv::norm(b, cv::NORM_L2);
  const double relative = length > 0 ? distance / length : distance;
  return relative == relative ? relative : HUGE_VAL;
}

}  // namespace support
