// One point's residual and its derivatives with respect to the unknowns of its view.
#pragma once

#include <array>
#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

#include "lens/camera.h"
#include "robust/arrow_matrix.h"
#include "solver/view_points.h"

namespace fisheye_calibration::robust {

// A camera at a pose, with what all points share.
struct PosedCamera {
  lens::Camera camera;  // skew is held
  cv::Matx33d R;
  std::array<cv::Matx33d, 3> dR;
  cv::Vec3d T;

  PosedCamera(const lens::Camera& intrinsics, const lens::Pose& pose);
};

// J: the derivatives of the pixel (u, v) with respect to fx, fy, cx, cy, k0, k1, rotation vector
// and translation. `depth` is the third coordinate in the camera frame, positive in front of the
// camera, and `theta` the incidence angle, radians.
struct PointRows {
  ViewVector u, v;
  cv::Vec2d pixel;
  double depth = 0;
  double theta = 0;
};

PointRows pointRows(const PosedCamera& posed, double X, double Y, double Z);

// The projections of all points of a view and the residuals e = measured - projected.
struct ViewRows {
  std::vector<PointRows> points;
  std::vector<cv::Vec2d> e;
};

ViewRows viewRows(const solver::ViewPoints& view, const PosedCamera& posed);

// M += w (u u^T + v v^T), the lower triangle only; mirrorLower copies it to the upper one.
void addOuterProducts(ViewMatrix& M, const PointRows& rows, double w);
void mirrorLower(ViewMatrix& M);

}  // namespace fisheye_calibration::robust
