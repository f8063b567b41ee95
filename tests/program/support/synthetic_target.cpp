#include "program/support/synthetic_target.h"

#include <cmath>
#include <opencv2/imgproc.hpp>

namespace fisheye_calibration::program {
namespace {

double angleOf(const SyntheticCamera& camera, double thetaD) {
  double theta = thetaD;
  for (int i = 0; i < 6; ++i) {
    const double value = theta + camera.k0 * theta * theta + camera.k1 * theta * theta * theta;
    const double slope = 1 + 2 * camera.k0 * theta + 3 * camera.k1 * theta * theta;
    theta -= (value - thetaD) / slope;
  }
  return theta;
}

bool dark(const SyntheticTarget& target, cv::Point2d bed) {
  const double c = bed.x / target.spacing;
  const double r = bed.y / target.spacing;
  if (target.pattern == Pattern::kChessboard) {
    // The squares reach one step beyond the outermost corners.
    if (c < -1 || r < -1 || c >= target.columns || r >= target.rows) {
      return false;
    }
    return (static_cast<int>(std::floor(c)) + static_cast<int>(std::floor(r))) % 2 == 0;
  }
  const int row = static_cast<int>(std::lround(r));
  const bool staggered = target.pattern == Pattern::kAsymmetricCircles;
  const double pitch = staggered ? 2 : 1;
  const double shift = staggered && row % 2 != 0 ? 1 : 0;
  const int column = static_cast<int>(std::lround((c - shift) / pitch));
  if (row < 0 || row >= target.rows || column < 0 || column >= target.columns) {
    return false;
  }
  return std::hypot(c - shift - pitch * column, r - row) < 0.28 * (staggered ? 1.4 : 1);
}

}  // namespace

cv::Point2d SyntheticCamera::project(double Xw, double Yw) const {
  const double X = R[0] * Xw + R[1] * Yw + T[0];
  const double Y = R[3] * Xw + R[4] * Yw + T[1];
  const double Z = R[6] * Xw + R[7] * Yw + T[2];
  const double r = std::hypot(X, Y);
  const double theta = std::atan2(r, Z);
  const double thetaD = theta + k0 * theta * theta + k1 * theta * theta * theta;
  const double s = r > 1e-12 ? thetaD / r : 1 / Z;
  return {focalLength * s * X + principalPoint.x, focalLength * s * Y + principalPoint.y};
}

cv::Point2d SyntheticCamera::bedPointAt(double x, double y) const {
  const double a = (x - principalPoint.x) / focalLength;
  const double b = (y - principalPoint.y) / focalLength;
  const double thetaD = std::hypot(a, b);
  const double theta = angleOf(*this, thetaD);
  const double s = thetaD > 1e-12 ? std::sin(theta) / thetaD : 1;
  const double d[3] = {s * a, s * b, std::cos(theta)};
  // World ray: origin -R^T T, direction R^T d; it meets Z = 0 at origin - (oz / dz) direction.
  double origin[3];
  double direction[3];
  for (std::size_t i = 0; i < 3; ++i) {
    origin[i] = -(R[i] * T[0] + R[3 + i] * T[1] + R[6 + i] * T[2]);
    direction[i] = R[i] * d[0] + R[3 + i] * d[1] + R[6 + i] * d[2];
  }
  if (direction[2] <= 1e-9) {
    return {1e9, 1e9};  // above the horizon
  }
  const double t = -origin[2] / direction[2];
  return {origin[0] + t * direction[0], origin[1] + t * direction[1]};
}

cv::Mat drawTarget(const SyntheticCamera& camera, const SyntheticTarget& target) {
  constexpr int kSamples = 3;  // per pixel and direction
  cv::Mat picture(camera.height, camera.width, CV_8UC1);
  for (int y = 0; y < camera.height; ++y) {
    for (int x = 0; x < camera.width; ++x) {
      int count = 0;
      for (int i = 0; i < kSamples * kSamples; ++i) {
        const double dx = (i % kSamples + 0.5) / kSamples - 0.5;
        const double dy = (i / kSamples + 0.5) / kSamples - 0.5;
        count += dark(target, camera.bedPointAt(x + dx, y + dy)) ? 1 : 0;
      }
      const double share = static_cast<double>(count) / (kSamples * kSamples);
      const double level = target.darkPoints ? 215 - 180 * share : 35 + 180 * share;
      picture.at<unsigned char>(y, x) = static_cast<unsigned char>(std::lround(level));
    }
  }
  cv::GaussianBlur(picture, picture, cv::Size(), 0.8);
  return picture;
}

cv::Mat photograph(const SyntheticCamera& camera, const cv::Mat& flat, double pixelsPerUnit,
                   cv::Point2d corner) {
  constexpr int kSamples = 3;  // per pixel and direction
  cv::Mat picture(camera.height, camera.width, CV_8UC1);
  for (int y = 0; y < camera.height; ++y) {
    for (int x = 0; x < camera.width; ++x) {
      int sum = 0;
      for (int i = 0; i < kSamples * kSamples; ++i) {
        const cv::Point2d bed = camera.bedPointAt(x + (i % kSamples + 0.5) / kSamples - 0.5,
                                                  y + (i / kSamples + 0.5) / kSamples - 0.5);
        const cv::Point2d at = (bed - corner) * pixelsPerUnit;
        const bool onPicture = at.x >= 0 && at.y >= 0 && at.x < flat.cols && at.y < flat.rows;
        sum += onPicture ? flat.at<unsigned char>(static_cast<int>(at.y), static_cast<int>(at.x))
                         : 255;
      }
      // Never quite black or white, so that noise can be added.
      picture.at<unsigned char>(y, x) =
          static_cast<unsigned char>(std::lround(35 + 180.0 / 255 * sum / (kSamples * kSamples)));
    }
  }
  cv::GaussianBlur(picture, picture, cv::Size(), 0.8);
  return picture;
}

cv::Mat withNoise(const cv::Mat& picture, double sigma) {
  cv::Mat noise(picture.size(), CV_32F);
  cv::RNG(7).fill(noise, cv::RNG::NORMAL, 0, sigma);
  cv::Mat sum;
  picture.convertTo(sum, CV_32F);
  sum += noise;
  cv::Mat result;
  sum.convertTo(result, CV_8U);
  return result;
}

std::vector<CalibrationPoint> exactPoints(const SyntheticCamera& camera,
                                          const SyntheticTarget& target) {
  std::vector<CalibrationPoint> points;
  const bool staggered = target.pattern == Pattern::kAsymmetricCircles;
  for (int r = 0; r < target.rows; ++r) {
    for (int c = 0; c < target.columns; ++c) {
      const double Xw = target.spacing * (staggered ? 2 * c + r % 2 : c);
      const double Yw = target.spacing * r;
      const cv::Point2d image = camera.project(Xw, Yw);
      points.push_back({.PointId = static_cast<int>(points.size()) + 1,
                        .Xw = static_cast<float>(Xw),
                        .Yw = static_cast<float>(Yw),
                        .ImagePtX = static_cast<float>(image.x),
                        .ImagePtY = static_cast<float>(image.y)});
    }
  }
  return points;
}

}  // namespace fisheye_calibration::program
