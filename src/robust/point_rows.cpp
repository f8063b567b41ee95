#include "robust/point_rows.h"

#include <cmath>

#include "lens/camera_model-inl.h"
#include "lens/rotation.h"

namespace fisheye_calibration::robust {
namespace {

namespace model = lens::HWY_NAMESPACE;

// A point (x, y, z) of the camera frame after the lens, with its derivatives.
struct Distorted {
  double theta;         // incidence angle, 0 to pi
  double cosine, sine;  // of its azimuth, 0 on the axis
  double x, y;          // (xd, yd)
  cv::Vec3d xSlope, ySlope;
};

// With rho = |(x, y)| and n^2 = rho^2 + z^2:
//   theta = atan2(rho, z),   (xd, yd) = theta_d (x, y)/rho
//   dtheta/d(x, y, z) = (z x/rho, z y/rho, -rho)/n^2
Distorted distorted(const lens::Camera& camera, double x, double y, double z) {
  const double rho = std::sqrt(x * x + y * y);
  if (!(rho > model::kAxisRadius * std::abs(z))) {
    const double a = x / z;
    const double b = y / z;
    return {0, 0, 0, a, b, {1 / z, 0, -a / z}, {0, 1 / z, -b / z}};
  }
  const double squared = rho * rho + z * z;
  const double theta = std::atan2(rho, z);
  const double thetaD = model::distortedAngle(camera, theta);
  const double slope = model::distortedAngleSlope(camera, theta);
  const double c = x / rho;
  const double s = y / rho;
  // d(xd, yd) = (c, s) slope dtheta + theta_d d(c, s), d(c, s) = (s, -c)(s dx - c dy)/rho
  const double along = slope * z / squared;
  const double across = thetaD / rho;
  const double mixed = (along - across) * c * s;
  return {theta,
          c,
          s,
          thetaD * c,
          thetaD * s,
          {along * c * c + across * s * s, mixed, -slope * rho / squared * c},
          {mixed, along * s * s + across * c * c, -slope * rho / squared * s}};
}

}  // namespace

PosedCamera::PosedCamera(const lens::Camera& intrinsics, const lens::Pose& pose)
    : camera(intrinsics),
      R(lens::rotationFromVector(pose.om)),
      dR(lens::rotationDerivative(pose.om)),
      T(pose.T) {}

PointRows pointRows(const PosedCamera& posed, double X, double Y, double Z) {
  const lens::Camera& camera = posed.camera;
  const auto P = model::toCameraFrame(posed.R, posed.T, X, Y, Z);
  const Distorted d = distorted(camera, P.x, P.y, P.z);

  // u = fx (xd + alpha yd) + cx, v = fy yd + cy
  cv::Vec3d du_dP;
  cv::Vec3d dv_dP;
  for (int k = 0; k < 3; ++k) {
    du_dP[k] = camera.fx * (d.xSlope[k] + camera.alpha * d.ySlope[k]);
    dv_dP[k] = camera.fy * d.ySlope[k];
  }
  PointRows rows;
  const double xSkewed = d.x + camera.alpha * d.y;
  rows.pixel = {camera.fx * xSkewed + camera.cx, camera.fy * d.y + camera.cy};
  rows.depth = P.z;
  rows.theta = d.theta;
  rows.u[0] = xSkewed;
  rows.v[1] = d.y;
  rows.u[2] = 1;
  rows.v[3] = 1;
  const double powers[2] = {d.theta * d.theta, d.theta * d.theta * d.theta};
  for (int k = 0; k < 2; ++k) {
    rows.u[4 + k] = camera.fx * powers[k] * (d.cosine + camera.alpha * d.sine);
    rows.v[4 + k] = camera.fy * powers[k] * d.sine;
  }
  // dP/dom_k = (dR/dom_k) X, dP/dT = I
  for (int k = 0; k < 3; ++k) {
    const cv::Vec3d dP = posed.dR[static_cast<std::size_t>(k)] * cv::Vec3d(X, Y, Z);
    rows.u[6 + k] = du_dP.dot(dP);
    rows.v[6 + k] = dv_dP.dot(dP);
    rows.u[9 + k] = du_dP[k];
    rows.v[9 + k] = dv_dP[k];
  }
  return rows;
}

ViewRows viewRows(const solver::ViewPoints& view, const PosedCamera& posed) {
  ViewRows rows;
  rows.points.reserve(view.size());
  rows.e.reserve(view.size());
  for (std::size_t i = 0; i < view.size(); ++i) {
    rows.points.push_back(pointRows(posed, view.X[i], view.Y[i], view.Z[i]));
    rows.e.push_back(cv::Vec2d(view.image.x[i], view.image.y[i]) - rows.points.back().pixel);
  }
  return rows;
}

void addOuterProducts(ViewMatrix& M, const PointRows& rows, double w) {
  for (int i = 0; i < kViewUnknowns; ++i) {
    const double wu = w * rows.u[i];
    const double wv = w * rows.v[i];
    for (int j = 0; j <= i; ++j) {
      M(i, j) += wu * rows.u[j] + wv * rows.v[j];
    }
  }
}

void mirrorLower(ViewMatrix& M) {
  for (int i = 0; i < kViewUnknowns; ++i) {
    for (int j = 0; j < i; ++j) {
      M(j, i) = M(i, j);
    }
  }
}

}  // namespace fisheye_calibration::robust
