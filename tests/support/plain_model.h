// The camera model of src/fisheye/fisheye.h derived a second time, as plainly as possible: one
// formula after the other on cv::Mat, without optimisation and without sharing code with src/. The
// library's own, faster code is compared with it.
#pragma once

#include <array>
#include <opencv2/core.hpp>

namespace plain {

// One camera. Parameters in the order focal x, focal y, principal x, principal y, skew, k0, k1.
struct Intrinsics {
  double focalX = 0;
  double focalY = 0;
  double principalX = 0;
  double principalY = 0;
  double skew = 0;
  double k0 = 0;
  double k1 = 0;
  std::array<bool, 7> estimated{};  // which parameters the solver moves

  cv::Mat cameraMatrix() const;      // 3x3, CV_64F
  cv::Mat distortionVector() const;  // 2x1, CV_64F

  // This camera with the next element of `step` added to every estimated parameter.
  Intrinsics plus(const cv::Mat& step) const;

  // The next element of `values` in every estimated parameter, 0 in every other.
  Intrinsics assigned(const cv::Mat& values) const;
};

// Rotation matrix (3x3) of a rotation vector of three doubles, by Rodrigues' formula.
cv::Mat rotationMatrix(const cv::Mat& rotationVector);

// N pixels (N x 1, CV_64FC2) of N target points (any layout, three channels or 3-vectors' depth).
// jacobian, if given: 2N x 13, rows u and v of each point, columns fx, fy, cx, cy, k0, k1, rotation
// vector, translation, alpha.
cv::Mat projectPoints(const cv::Mat& objectPoints, const cv::Mat& rvec, const cv::Mat& tvec,
                      const cv::Mat& K, const cv::Mat& D, double alpha,
                      cv::Mat* jacobian = nullptr);
cv::Mat projectPoints(const cv::Mat& objectPoints, const cv::Mat& rvec, const cv::Mat& tvec,
                      const Intrinsics& camera, cv::Mat* jacobian = nullptr);

// N undistorted points (N x 1, CV_64FC2) of N pixels (any layout, two channels).
cv::Mat undistortPoints(const cv::Mat& distorted, const cv::Mat& K, const cv::Mat& D,
                        const cv::Mat& R, const cv::Mat& P, const cv::TermCriteria& criteria);

// Ideal normalised coordinates of N pixels: skew undone, then ten Newton steps at most, to 1e-8.
cv::Mat normalizePixels(const cv::Mat& imagePoints, const Intrinsics& camera);

}  // namespace plain
