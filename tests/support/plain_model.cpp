#include "support/plain_model.h"

#include <cmath>
#include <limits>
#include <opencv2/calib3d.hpp>

namespace plain {
namespace {

constexpr double kHalfPi = 1.5707963267948966;

// N x 1 doubles with `channels` channels, whatever the layout and depth of `points`.
cv::Mat columnOf(const cv::Mat& points, int channels) {
  cv::Mat wide;
  points.convertTo(wide, CV_MAKETYPE(CV_64F, channels));
  return wide.clone().reshape(channels, static_cast<int>(points.total()));
}

cv::Mat columnOfThree(const cv::Mat& vector) {
  cv::Mat wide;
  vector.clone().reshape(1, 3).convertTo(wide, CV_64F);
  return wide;
}

// The two rows of the Jacobian of one point X that lies at Y in the camera frame.
void fillJacobianRows(const cv::Vec3d& X, const cv::Vec3d& Y, const cv::Mat& dR, double fx,
                      double fy, double k0, double k1, double alpha, cv::Mat rows) {
  const double z = std::abs(Y[2]) < std::numeric_limits<double>::min() ? 1.0 : Y[2];
  const double x = Y[0] / z;
  const double y = Y[1] / z;
  const double r = std::sqrt(x * x + y * y);
  const bool offAxis = r > 1e-8;
  const double theta = std::atan(r);
  const double thetaD = theta + k0 * theta * theta + k1 * theta * theta * theta;
  const double inverseR = offAxis ? 1.0 / r : 1.0;
  const double cdist = offAxis ? thetaD * inverseR : 1.0;
  const double xd = cdist * x;
  const double yd = cdist * y;
  const double dThetaDdTheta = 1 + 2 * k0 * theta + 3 * k1 * theta * theta;
  const double dThetadR = 1 / (1 + r * r);

  rows.setTo(0);
  rows.at<double>(0, 0) = xd + alpha * yd;
  rows.at<double>(1, 1) = yd;
  rows.at<double>(0, 2) = 1;
  rows.at<double>(1, 3) = 1;
  for (int power = 2; power <= 3; ++power) {
    const double dxd = x * inverseR * std::pow(theta, power);
    const double dyd = y * inverseR * std::pow(theta, power);
    rows.at<double>(0, power + 2) = fx * (dxd + alpha * dyd);
    rows.at<double>(1, power + 2) = fy * dyd;
  }
  rows.at<double>(0, 12) = fx * yd;

  cv::Mat dY = cv::Mat::zeros(3, 6, CV_64F);  // with respect to rotation vector and translation
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      for (int s = 0; s < 3; ++s) {
        dY.at<double>(row, column) += X[s] * dR.at<double>(column, 3 * row + s);
      }
    }
    dY.at<double>(row, 3 + row) = 1;
  }
  for (int p = 0; p < 6; ++p) {
    const double dx = dY.at<double>(0, p) / z - x * dY.at<double>(2, p) / z;
    const double dy = dY.at<double>(1, p) / z - y * dY.at<double>(2, p) / z;
    const double dr2 = 2 * x * dx + 2 * y * dy;
    const double dr = dr2 * (offAxis ? 1 / (2 * r) : 1.0);
    const double dcdist = inverseR * (dThetaDdTheta * dThetadR * dr - cdist * dr);
    const double dxd = dx * cdist + x * dcdist;
    const double dyd = dy * cdist + y * dcdist;
    rows.at<double>(0, 6 + p) = fx * (dxd + alpha * dyd);
    rows.at<double>(1, 6 + p) = fy * dyd;
  }
}

cv::Vec2d pixelOf(const cv::Vec3d& Y, double fx, double fy, double cx, double cy, double k0,
                  double k1, double alpha) {
  const double z = std::abs(Y[2]) < std::numeric_limits<double>::min() ? 1.0 : Y[2];
  const double x = Y[0] / z;
  const double y = Y[1] / z;
  const double r = std::sqrt(x * x + y * y);
  const double theta = std::atan(r);
  const double thetaD = theta + k0 * theta * theta + k1 * theta * theta * theta;
  const double cdist = r > 1e-8 ? thetaD / r : 1.0;
  const double xd = cdist * x;
  const double yd = cdist * y;
  return {fx * (xd + alpha * yd) + cx, fy * yd + cy};
}

// Rectifying matrix of undistortPoints: P's left block times R.
cv::Mat rectification(const cv::Mat& R, const cv::Mat& P) {
  cv::Mat RR = cv::Mat::eye(3, 3, CV_64F);
  if (!R.empty()) {
    if (R.total() * static_cast<size_t>(R.channels()) == 3) {
      RR = rotationMatrix(columnOfThree(R));
    } else {
      R.convertTo(RR, CV_64F);
    }
  }
  if (!P.empty()) {
    cv::Mat wide;
    P.convertTo(wide, CV_64F);
    RR = wide.colRange(0, 3) * RR;
  }
  return RR;
}

cv::Vec2d undistortPoint(const cv::Vec2d& pw, double k0, double k1, const cv::Mat& RR,
                         const cv::TermCriteria& criteria) {
  const bool counted = (criteria.type & cv::TermCriteria::COUNT) != 0;
  const bool bounded = (criteria.type & cv::TermCriteria::EPS) != 0;
  const int maxCount = counted ? criteria.maxCount : std::numeric_limits<int>::max();
  const double thetaD =
      std::max(-kHalfPi, std::min(kHalfPi, std::sqrt(pw[0] * pw[0] + pw[1] * pw[1])));
  bool converged = false;
  double theta = thetaD;
  double scale = 0.0;
  if (bounded && !(std::abs(thetaD) > criteria.epsilon)) {
    converged = true;
  } else {
    for (int i = 0; i < maxCount; ++i) {
      const double fix = (theta + k0 * theta * theta + k1 * theta * theta * theta - thetaD) /
                         (1 + 2 * k0 * theta + 3 * k1 * theta * theta);
      theta -= fix;
      if (bounded && std::abs(fix) < criteria.epsilon) {
        converged = true;
        break;
      }
    }
    scale = std::tan(theta) / thetaD;
  }
  const bool flipped = (thetaD < 0 && theta > 0) || (thetaD > 0 && theta < 0);
  if ((bounded && !converged) || flipped) return {-1000000.0, -1000000.0};
  const cv::Mat pu = (cv::Mat_<double>(3, 1) << pw[0] * scale, pw[1] * scale, 1.0);
  const cv::Mat pr = RR * pu;
  return {pr.at<double>(0) / pr.at<double>(2), pr.at<double>(1) / pr.at<double>(2)};
}

}  // namespace

cv::Mat Intrinsics::cameraMatrix() const {
  return (cv::Mat_<double>(3, 3) << focalX, skew * focalX, principalX, 0, focalY, principalY, 0, 0,
          1);
}

cv::Mat Intrinsics::distortionVector() const { return (cv::Mat_<double>(2, 1) << k0, k1); }

Intrinsics Intrinsics::plus(const cv::Mat& step) const {
  Intrinsics sum = *this;
  double* const parameters[] = {&sum.focalX, &sum.focalY, &sum.principalX, &sum.principalY,
                                &sum.skew,   &sum.k0,     &sum.k1};
  int next = 0;
  for (size_t i = 0; i < 7; ++i) {
    if (estimated[i]) *parameters[i] += step.at<double>(next++);
  }
  return sum;
}

Intrinsics Intrinsics::assigned(const cv::Mat& values) const {
  Intrinsics zero;
  zero.estimated = estimated;
  return zero.plus(values);
}

cv::Mat rotationMatrix(const cv::Mat& rotationVector) {
  const double angle = cv::norm(rotationVector);
  const cv::Mat identity = cv::Mat::eye(3, 3, CV_64F);
  if (angle < std::numeric_limits<double>::epsilon()) return identity;
  const cv::Mat a = rotationVector / angle;
  const cv::Mat across =
      (cv::Mat_<double>(3, 3) << 0, -a.at<double>(2), a.at<double>(1), a.at<double>(2), 0,
       -a.at<double>(0), -a.at<double>(1), a.at<double>(0), 0);
  return std::cos(angle) * identity + (1 - std::cos(angle)) * a * a.t() + std::sin(angle) * across;
}

cv::Mat projectPoints(const cv::Mat& objectPoints, const cv::Mat& rvec, const cv::Mat& tvec,
                      const cv::Mat& K, const cv::Mat& D, double alpha, cv::Mat* jacobian) {
  const cv::Mat X = columnOf(objectPoints, 3);
  const cv::Mat om = columnOfThree(rvec);
  const cv::Mat T = columnOfThree(tvec);
  cv::Mat camera;
  K.convertTo(camera, CV_64F);
  cv::Mat k;
  D.clone().reshape(1, 2).convertTo(k, CV_64F);
  const double fx = camera.at<double>(0, 0);
  const double fy = camera.at<double>(1, 1);
  const double cx = camera.at<double>(0, 2);
  const double cy = camera.at<double>(1, 2);
  const double k0 = k.at<double>(0);
  const double k1 = k.at<double>(1);

  cv::Mat libraryRotation;
  cv::Mat dR;  // 3 x 9: row c holds dR/dom(c) row by row
  cv::Rodrigues(om, libraryRotation, dR);
  const cv::Mat R = rotationMatrix(om);

  cv::Mat pixels(X.rows, 1, CV_64FC2);
  if (jacobian != nullptr) jacobian->create(2 * X.rows, 13, CV_64F);
  for (int i = 0; i < X.rows; ++i) {
    const cv::Mat Y = R * cv::Mat(X.at<cv::Vec3d>(i)) + T;
    const cv::Vec3d y(Y.at<double>(0), Y.at<double>(1), Y.at<double>(2));
    pixels.at<cv::Vec2d>(i) = pixelOf(y, fx, fy, cx, cy, k0, k1, alpha);
    if (jacobian != nullptr) {
      fillJacobianRows(X.at<cv::Vec3d>(i), y, dR, fx, fy, k0, k1, alpha,
                       jacobian->rowRange(2 * i, 2 * i + 2));
    }
  }
  return pixels;
}

cv::Mat projectPoints(const cv::Mat& objectPoints, const cv::Mat& rvec, const cv::Mat& tvec,
                      const Intrinsics& camera, cv::Mat* jacobian) {
  return projectPoints(objectPoints, rvec, tvec, camera.cameraMatrix(), camera.distortionVector(),
                       camera.skew, jacobian);
}

cv::Mat undistortPoints(const cv::Mat& distorted, const cv::Mat& K, const cv::Mat& D,
                        const cv::Mat& R, const cv::Mat& P, const cv::TermCriteria& criteria) {
  const cv::Mat pixels = columnOf(distorted, 2);
  cv::Mat camera;
  K.convertTo(camera, CV_64F);
  cv::Mat k;
  D.clone().reshape(1, 2).convertTo(k, CV_64F);
  const cv::Mat RR = rectification(R, P);
  cv::Mat undistorted(pixels.rows, 1, CV_64FC2);
  for (int i = 0; i < pixels.rows; ++i) {
    const cv::Vec2d pixel = pixels.at<cv::Vec2d>(i);
    const cv::Vec2d pw((pixel[0] - camera.at<double>(0, 2)) / camera.at<double>(0, 0),
                       (pixel[1] - camera.at<double>(1, 2)) / camera.at<double>(1, 1));
    undistorted.at<cv::Vec2d>(i) =
        undistortPoint(pw, k.at<double>(0), k.at<double>(1), RR, criteria);
  }
  return undistorted;
}

cv::Mat normalizePixels(const cv::Mat& imagePoints, const Intrinsics& camera) {
  cv::Mat distorted = columnOf(imagePoints, 2);
  for (int i = 0; i < distorted.rows; ++i) {
    cv::Vec2d& d = distorted.at<cv::Vec2d>(i);
    d[0] = (d[0] - camera.principalX) / camera.focalX;
    d[1] = (d[1] - camera.principalY) / camera.focalY;
    d[0] -= camera.skew * d[1];
  }
  const cv::TermCriteria criteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 10, 1e-8);
  return undistortPoints(distorted, cv::Mat::eye(3, 3, CV_64F), camera.distortionVector(),
                         cv::Mat(), cv::Mat(), criteria);
}

}  // namespace plain
