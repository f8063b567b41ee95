// Maps pixels of the corrected image to positions in the raw image. The undistortion maps and the
// renderer follow the same steps and so give the same bytes.
#pragma once

#include <opencv2/core.hpp>

#include "lens/camera.h"

namespace fisheye_calibration::rendering {

// The ray of corrected pixel (j, i) in the camera's frame is iR (j, i, 1)^T. It is stepped along
// the row, and the rounding of the steps is part of the result (compatibility 37):
//   (X, Y, W) = i iR(., 1) + iR(., 2) at j = 0, then += iR(., 0) from each pixel to the next.
struct RectifyingRays {
  cv::Matx33d iR;
  lens::Camera camera;  // its skew is not read
};

// iR = (PP RR)^-1, where PP is P with its principal point moved to the centre of an image of `size`
// (compatibility 36), (trunc(width/2 + 0.5), trunc(height/2 + 0.5)). A singular product gives the
// zero matrix.
RectifyingRays rectifyingRays(const lens::Camera& camera, const cv::Matx33d& RR,
                              const cv::Matx33d& P, const cv::Size& size);

// Positions in the raw image are integers in units of 1/32 pixel.
constexpr int kFractionBits = 5;
constexpr int kFractions = 1 << kFractionBits;

struct RawPosition {
  int u = 0;
  int v = 0;
};

// Where the camera sees the ray (X, Y, W). With x = X/W, y = Y/W, r = sqrt(x^2 + y^2),
// theta = atan r:
//   u = fx x theta_d/r + cx, v = fy y theta_d/r + cy, in double;
// rays that point away from the camera (W <= 0) lie at infinity (compatibility 38). Rounded by
// roundToInt.
RawPosition rawPosition(const lens::Camera& camera, double X, double Y, double W);

// The nearest integer, ties to even. NaN and values beyond 32 bits give -2^31.
int roundToInt(double value);

}  // namespace fisheye_calibration::rendering
