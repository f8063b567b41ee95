// The points of one view as the solver's loops want them: one array a coordinate.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace fisheye {

// Points of a plane or an image.
struct PlanarPoints {
  std::vector<double> x, y;

  explicit PlanarPoints(std::size_t count = 0) : x(count), y(count) {}
  std::size_t size() const { return x.size(); }
};

// Target points (X, Y, Z) in world units and where the camera sees them, in pixels.
struct ViewPoints {
  std::vector<double> X, Y, Z;
  PlanarPoints image;

  std::size_t size() const { return X.size(); }
};

// Raises the image library's error unless target points of a usable type are there.
void requireTargetPoints(bool present, const char* function);

// Raises the image library's error unless both lists are there, of three and two channels, floats
// or doubles.
void requireListsOfPoints(cv::InputArrayOfArrays objectPoints, cv::InputArrayOfArrays imagePoints,
                          const char* function);

// One view out of 3-channel and 2-channel arrays of floats or doubles, any layout. Other types
// raise the image library's error.
ViewPoints readView(const cv::Mat& objectPoints, const cv::Mat& imagePoints, const char* function);

// Raises the image library's error unless the view has as many image points as target points.
void requirePairs(const ViewPoints& view, const char* function);

// All views. The number of views is that of objectPoints.
std::vector<ViewPoints> readViews(cv::InputArrayOfArrays objectPoints,
                                  cv::InputArrayOfArrays imagePoints, const char* function);

}  // namespace fisheye
