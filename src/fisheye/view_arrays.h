// Reads views from the callers' arrays for the solver.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "solver/view_points.h"

namespace fisheye_calibration::fisheye {

// Throws the image library's error unless target points of a usable type are present.
void requireTargetPoints(bool present, const char* function);

// Throws the image library's error unless both lists are present, with three and two channels of
// floats or doubles.
void requireListsOfPoints(cv::InputArrayOfArrays objectPoints, cv::InputArrayOfArrays imagePoints,
                          const char* function);

// One view from 3-channel and 2-channel arrays of floats or doubles of any layout. Other types
// throw the image library's error.
solver::ViewPoints readView(const cv::Mat& objectPoints, const cv::Mat& imagePoints,
                            const char* function);

// All views. The number of views is that of objectPoints.
std::vector<solver::ViewPoints> readViews(cv::InputArrayOfArrays objectPoints,
                                          cv::InputArrayOfArrays imagePoints, const char* function);

}  // namespace fisheye_calibration::fisheye
