// The lens curve with its 95 % band.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "lens/camera.h"

namespace fisheye_calibration::program {

struct LensCurve {
  lens::Camera camera;
  cv::Matx66d covariance;  // of fx, fy, cx, cy, k0, k1
  double dataEnd = 0;      // the largest angle of a point in use, radians; 0: unknown
  double pictureEnd = 0;   // the largest angle in the picture, radians
};

// With theta the angle to the optical axis,
//
//   r = f (theta + k0 theta^2 + k1 theta^3),   f = (fx + fy)/2,   pixels
double lensRadius(const lens::Camera& camera, double theta);

// The half width of the 95 % band of r: 1.96 sqrt(g C g^T), g the derivatives of r with respect to
// fx, fy, cx, cy, k0, k1.
double lensBand(const LensCurve& curve, double theta);

std::string lensFigure(const LensCurve& curve);

}  // namespace fisheye_calibration::program
