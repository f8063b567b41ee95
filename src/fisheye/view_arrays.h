// Views in the callers' arrays, as the solver takes them.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "solver/view_points.h"

namespace fisheye_calibration::fisheye {

// Raises the image library's error unless target points of a usable type are there.
void requireTargetPoints(bool present, const char* function);

// Raises the image library's error unless both lists are there, of three and two channels, floats
// or doubles.
void requireListsOfPoints(cv::InputArrayOfArrays objectPoints, cv::InputArrayOfArrays imagePoints,
                          const char* function);

// One view out of 3-channel and 2-channel arrays of floats or doubles, any layout. Other types
// raise the image library's error.
solver::ViewPoints readView(const cv::Mat& objectPoints, const cv::Mat& imagePoints,
                            const char* function);

// All views. The number of views is that of objectPoints.
std::vector<solver::ViewPoints> readViews(cv::InputArrayOfArrays objectPoints,
                                          cv::InputArrayOfArrays imagePoints, const char* function);

}  // namespace fisheye_calibration::fisheye
