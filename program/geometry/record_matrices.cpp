#include "geometry/record_matrices.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "base/angles.h"

namespace fisheye_calibration::program {
using Param = FishEyeCalibrationParam;

Matrix3 rotationOf(const Param& param) {
  return {param.R1, param.R2, param.R3, param.R4, param.R5, param.R6, param.R7, param.R8, param.R9};
}

Matrix3 homographyOf(const Param& param) {
  return {param.p1, param.p2, param.p3, param.p4, param.p5, param.p6, param.p7, param.p8, param.p9};
}

Vector3 translationOf(const Param& param) { return {param.Tx, param.Ty, param.Tz}; }

Matrix3 rotationOfVector(const Param& param) {
  // R = cos(a) I + (1 - cos(a)) k k^T + sin(a) [k]x with the angle a = |r| and k = r / a.
  Vector3 k = {param.Rx, param.Ry, param.Rz};
  const double angle = std::hypot(k[0], k[1], k[2]);
  if (angle == 0) {
    return {1, 0, 0, 0, 1, 0, 0, 0, 1};
  }
  for (double& component : k) {
    component /= angle;
  }
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  const Matrix3 cross = {0, -k[2], k[1], k[2], 0, -k[0], -k[1], k[0], 0};
  Matrix3 R{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      R[3 * i + j] = (i == j ? c : 0) + (1 - c) * k[i] * k[j] + s * cross[3 * i + j];
    }
  }
  return R;
}

double determinant(const Matrix3& m) {
  return m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) +
         m[2] * (m[3] * m[7] - m[4] * m[6]);
}

double depthOf(const Param& param, double Xw, double Yw, double Zw) {
  const Matrix3 R = rotationOfVector(param);
  return R[6] * Xw + R[7] * Yw + R[8] * Zw + translationOf(param)[2];
}

double tiltDegrees(const Param& param) {
  const double cosine = std::clamp(std::abs(rotationOfVector(param)[8]), 0.0, 1.0);
  return degrees(std::acos(cosine));
}

}  // namespace fisheye_calibration::program
