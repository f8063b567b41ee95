// The matrices and vectors of a camera record, and what follows from them for the camera's pose.
#pragma once

#include <array>

#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

using Matrix3 = std::array<double, 9>;  // row by row
using Vector3 = std::array<double, 3>;

Matrix3 rotationOf(const FishEyeCalibrationParam& param);    // R1...R9
Matrix3 homographyOf(const FishEyeCalibrationParam& param);  // p1...p9
Vector3 translationOf(const FishEyeCalibrationParam& param);

// Rodrigues' formula for the vector (Rx, Ry, Rz).
Matrix3 rotationOfVector(const FishEyeCalibrationParam& param);

double determinant(const Matrix3& matrix);

// Distance of a world point from the camera along the optical axis; negative behind the camera.
double depthOf(const FishEyeCalibrationParam& param, double Xw, double Yw, double Zw);

// Angle between the optical axis and the normal of the work plane, degrees: 0 if the camera looks
// straight down.
double tiltDegrees(const FishEyeCalibrationParam& param);

}  // namespace fisheye_calibration::program
