#include "fisheye/arrays.h"

#include "lens/rotation.h"

namespace fisheye_calibration::fisheye {

lens::Camera readCamera(const cv::Mat& K, const cv::Mat& D, double alpha) {
  cv::Matx33d k;
  K.convertTo(k, CV_64F);
  cv::Mat d;
  D.convertTo(d, CV_64F);
  const double* distortion = d.empty() ? nullptr : d.ptr<double>();
  return {k(0, 0),
          k(1, 1),
          k(0, 2),
          k(1, 2),
          distortion ? distortion[0] : 0,
          distortion ? distortion[1] : 0,
          alpha};
}

cv::Vec3d readTriple(const cv::Mat& values) {
  cv::Mat row;
  values.convertTo(row, CV_64F);  // also makes it continuous
  const double* v = row.ptr<double>();
  return {v[0], v[1], v[2]};
}

cv::Matx33d rotationFromArray(cv::InputArray rotation) {
  if (rotation.empty()) {
    return cv::Matx33d::eye();
  }
  const cv::Mat values = rotation.getMat();
  if (values.total() * static_cast<std::size_t>(values.channels()) == 3) {
    return lens::rotationFromVector(readTriple(values));
  }
  cv::Matx33d R;
  values.convertTo(R, CV_64F);
  return R;
}

}  // namespace fisheye_calibration::fisheye
