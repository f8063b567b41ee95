// A known fisheye camera over a known flat target: where it sees the points, and its picture.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <vector>

#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

struct SyntheticCamera {
  int width = 960;
  int height = 720;
  double focalLength = 300;
  cv::Point2d principalPoint = {482, 355};
  double k0 = 0.01;
  double k1 = -0.05;
  // World -> camera, row by row: turned by 20 degrees about x, then by -15 degrees about y.
  std::array<double, 9> R = {0.9659258,  -0.0885213, -0.2432103, 0,        0.9396926,
                             -0.3420201, 0.2588190,  0.3303661,  0.9076734};
  std::array<double, 3> T = {-150, -100, 170};

  // theta_d = theta + k0 theta^2 + k1 theta^3
  cv::Point2d project(double Xw, double Yw) const;
  cv::Point2d bedPointAt(double x, double y) const;  // on the bed Z = 0, by inverting project()
};

enum class Pattern { kChessboard, kCircles, kAsymmetricCircles };

struct SyntheticTarget {
  Pattern pattern = Pattern::kChessboard;
  int columns = 9;
  int rows = 7;
  double spacing = 30;  // of the points; point (0, 0) lies at the world's origin
  bool darkPoints = true;
};

cv::Mat drawTarget(const SyntheticCamera& camera, const SyntheticTarget& target);

// What the camera sees of a picture that lies flat on the bed with its top left corner at `corner`;
// white elsewhere. Eight-bit grey.
cv::Mat photograph(const SyntheticCamera& camera, const cv::Mat& flat, double pixelsPerUnit,
                   cv::Point2d corner);

// With normally distributed noise, always the same.
cv::Mat withNoise(const cv::Mat& picture, double sigma);

// The target's points with exact image positions, row by row, PointId from 1.
std::vector<CalibrationPoint> exactPoints(const SyntheticCamera& camera,
                                          const SyntheticTarget& target);

}  // namespace fisheye_calibration::program
