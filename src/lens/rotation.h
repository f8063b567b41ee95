// Rotation vectors (axis times angle, radians) and rotation matrices: Rodrigues' formula.
#pragma once

#include <array>
#include <opencv2/core.hpp>

namespace fisheye_calibration::lens {

// R = cos(theta) I + (1 - cos(theta)) a a^T + sin(theta) [a]x with theta = |om|, a = om/theta; the
// identity when theta is below 2.22e-16.
cv::Matx33d rotationFromVector(const cv::Vec3d& om);

// dR/dom: element i is the derivative of the matrix with respect to component i of the vector.
std::array<cv::Matx33d, 3> rotationDerivative(const cv::Vec3d& om);

}  // namespace fisheye_calibration::lens
