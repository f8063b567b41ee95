// Rotation vectors (axis times angle, radians) and rotation matrices: Rodrigues' formula.
#pragma once

#include <array>
#include <opencv2/core.hpp>

namespace fisheye {

// R = cos(theta) I + (1 - cos(theta)) a a^T + sin(theta) [a]x with theta = |om|, a = om/theta; the
// identity when theta is below 2.22e-16.
cv::Matx33d rotationFromVector(const cv::Vec3d& om);

// dR/dom: element i is the derivative of the matrix by component i of the vector.
std::array<cv::Matx33d, 3> rotationDerivative(const cv::Vec3d& om);

// A rotation given as a vector of three elements (any shape) or as a 3x3 matrix; the identity when
// `rotation` is empty. The caller has checked the shape.
cv::Matx33d rotationFromArray(cv::InputArray rotation);

// Three doubles out of an array of three single-precision or double elements, whatever its shape.
cv::Vec3d readTriple(const cv::Mat& values);

}  // namespace fisheye
