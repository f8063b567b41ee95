// The camera model of one point and its derivatives. T is double, or Pack for a vector of points.
#if defined(FISHEYE_CAMERA_MODEL_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef FISHEYE_CAMERA_MODEL_INL_H_
#undef FISHEYE_CAMERA_MODEL_INL_H_
#else
#define FISHEYE_CAMERA_MODEL_INL_H_
#endif

#include <array>
#include <limits>
#include <opencv2/core.hpp>

#include "lens/camera.h"
#include "lens/pack-inl.h"

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::lens {
namespace HWY_NAMESPACE {

// Below this radius (tangent of the incidence angle) the ratio theta_d/r is taken as 1.
constexpr double kAxisRadius = 1e-8;

template <class T>
struct Projection {
  T z;                // guarded depth: a = Y1/z, b = Y2/z
  T a, b;             // normalised coordinates
  T r, theta;         // r = |(a, b)|, theta = atan r
  T inverseR, ratio;  // 1/r and theta_d/r, both 1 near the axis
  T xd, yd;           // after the lens
  T xSkewed;          // xd + alpha yd
  T u, v;             // pixels
};

template <class T>
struct Coordinates {
  T x, y, z;
};

// Y = R X + trans
template <class T>
HWY_INLINE Coordinates<T> toCameraFrame(const cv::Matx33d& R, const cv::Vec3d& trans, T X, T Y,
                                        T Z) {
  return {T(R(0, 0)) * X + T(R(0, 1)) * Y + T(R(0, 2)) * Z + T(trans[0]),
          T(R(1, 0)) * X + T(R(1, 1)) * Y + T(R(1, 2)) * Z + T(trans[1]),
          T(R(2, 0)) * X + T(R(2, 1)) * Y + T(R(2, 2)) * Z + T(trans[2])};
}

// A depth of 0 (or smaller than any normal double) counts as 1 (compatibility 26).
template <class T>
HWY_INLINE T guardedDepth(T z) {
  return select(absolute(z) < T(std::numeric_limits<double>::min()), T(1.0), z);
}

// theta_d = theta + k0 theta^2 + k1 theta^3
template <class T>
HWY_INLINE T distortedAngle(const Camera& camera, T theta) {
  const T theta2 = theta * theta;
  return theta + T(camera.k0) * theta2 + T(camera.k1) * (theta2 * theta);
}

// dtheta_d/dtheta = 1 + 2 k0 theta + 3 k1 theta^2
template <class T>
HWY_INLINE T distortedAngleSlope(const Camera& camera, T theta) {
  return T(1.0) + T(2 * camera.k0) * theta + T(3 * camera.k1) * (theta * theta);
}

template <class T>
HWY_INLINE Projection<T> projectPoint(const Camera& camera, const cv::Matx33d& R,
                                      const cv::Vec3d& trans, T X, T Y, T Z) {
  Projection<T> p;
  const Coordinates<T> Yc = toCameraFrame(R, trans, X, Y, Z);
  p.z = guardedDepth(Yc.z);
  p.a = Yc.x / p.z;
  p.b = Yc.y / p.z;
  p.r = squareRoot(p.a * p.a + p.b * p.b);
  p.theta = arcTangent(p.r);
  const T thetaD = distortedAngle(camera, p.theta);
  const auto offAxis = p.r > T(kAxisRadius);
  p.inverseR = select(offAxis, T(1.0) / p.r, T(1.0));
  p.ratio = select(offAxis, thetaD * p.inverseR, T(1.0));
  p.xd = p.ratio * p.a;
  p.yd = p.ratio * p.b;
  p.xSkewed = p.xd + T(camera.alpha) * p.yd;
  p.u = T(camera.fx) * p.xSkewed + T(camera.cx);
  p.v = T(camera.fy) * p.yd + T(camera.cy);
  return p;
}

// Derivatives of u and v with respect to the pose: rotation vector (3), translation (3).
template <class T>
struct PoseDerivatives {
  T u[6], v[6];
};

template <class T>
HWY_INLINE PoseDerivatives<T> poseDerivatives(const Camera& camera,
                                              const std::array<cv::Matx33d, 3>& dR, T X, T Y, T Z,
                                              const Projection<T>& p) {
  // (xd, yd) = ratio(r) (a, b), so d(xd, yd)/d(a, b) = ratio I + (dratio/dr)/r (a, b)(a, b)^T, with
  // dratio/dr = (dtheta_d/dtheta / (1 + r^2) - ratio)/r. Near the axis, where the square root of
  // r^2 has no derivative, dr/dp is taken as d(r^2)/dp, hence the factor 2 (compatibility 22).
  const T slope = distortedAngleSlope(camera, p.theta) / (T(1.0) + p.r * p.r);
  const T dRatio_dr = p.inverseR * (slope - p.ratio);
  const T curvature = dRatio_dr * select(p.r > T(kAxisRadius), p.inverseR, T(2.0));
  const T dxd_da = p.ratio + curvature * (p.a * p.a);
  const T dxd_db = curvature * (p.a * p.b);
  const T dyd_db = p.ratio + curvature * (p.b * p.b);

  // u = fx (xd + alpha yd) + cx, v = fy yd + cy
  const T fx(camera.fx);
  const T fy(camera.fy);
  const T alpha(camera.alpha);
  const T du_da = fx * (dxd_da + alpha * dxd_db);
  const T du_db = fx * (dxd_db + alpha * dyd_db);
  const T dv_da = fy * dxd_db;
  const T dv_db = fy * dyd_db;

  // a = Y1/z, b = Y2/z
  const T inverseZ = T(1.0) / p.z;
  const T du_dY[3] = {du_da * inverseZ, du_db * inverseZ, -(du_da * p.a + du_db * p.b) * inverseZ};
  const T dv_dY[3] = {dv_da * inverseZ, dv_db * inverseZ, -(dv_da * p.a + dv_db * p.b) * inverseZ};

  // dY/dom_i = (dR/dom_i) X, dY/dT = I
  PoseDerivatives<T> d;
  for (std::size_t i = 0; i < 3; ++i) {
    const Coordinates<T> dY = toCameraFrame(dR[i], cv::Vec3d(), X, Y, Z);
    d.u[i] = du_dY[0] * dY.x + du_dY[1] * dY.y + du_dY[2] * dY.z;
    d.v[i] = dv_dY[0] * dY.x + dv_dY[1] * dY.y + dv_dY[2] * dY.z;
    d.u[3 + i] = du_dY[i];
    d.v[3 + i] = dv_dY[i];
  }
  return d;
}

// Derivatives with respect to distortion and skew. The others are immediate: du/dfx = xSkewed,
// dv/dfy = yd, du/dcx = dv/dcy = 1.
template <class T>
struct LensDerivatives {
  T u_k[2], v_k[2];  // with respect to k0, k1
  T u_alpha;
};

template <class T>
HWY_INLINE LensDerivatives<T> lensDerivatives(const Camera& camera, const Projection<T>& p) {
  const T theta2 = p.theta * p.theta;
  const T powers[2] = {theta2, theta2 * p.theta};
  LensDerivatives<T> d;
  for (std::size_t i = 0; i < 2; ++i) {
    const T dxd = p.a * p.inverseR * powers[i];
    const T dyd = p.b * p.inverseR * powers[i];
    d.u_k[i] = T(camera.fx) * (dxd + T(camera.alpha) * dyd);
    d.v_k[i] = T(camera.fy) * dyd;
  }
  d.u_alpha = T(camera.fx) * p.yd;
  return d;
}

}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::lens
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
