// Rotation vectors and translations, one triple per view, in the callers' arrays.
#pragma once

#include <opencv2/core.hpp>

namespace fisheye_calibration::fisheye {

// Element `index` of an array of 3-channel elements (matrix or vector), or matrix `index` of a list
// of matrices of one such element. Throws the image library's error if there is none.
cv::Vec3d readTripleAt(const cv::_InputArray& triples, int index, const char* function);

// Writes that element, converted to the array's element type.
void writeTripleAt(const cv::_InputOutputArray& triples, int index, const cv::Vec3d& value,
                   const char* function);

// Whether the argument is a list of separate matrices.
bool isListOfMatrices(const cv::_InputArray& triples);

}  // namespace fisheye_calibration::fisheye
