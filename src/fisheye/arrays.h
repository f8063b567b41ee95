// Reads the callers' arrays for the camera model. The caller has checked the shapes.
#pragma once

#include <opencv2/core.hpp>

#include "lens/camera.h"

namespace fisheye_calibration::fisheye {

// The camera of a 3x3 matrix (its skew entry is not read) and a distortion vector of two elements,
// which may be empty (no distortion), in single or double precision.
lens::Camera readCamera(const cv::Mat& K, const cv::Mat& D, double alpha);

// Three doubles from an array of three single- or double-precision elements of any shape.
cv::Vec3d readTriple(const cv::Mat& values);

// A rotation given as a vector of three elements (any shape) or as a 3x3 matrix; the identity if
// `rotation` is empty.
cv::Matx33d rotationFromArray(cv::InputArray rotation);

}  // namespace fisheye_calibration::fisheye
