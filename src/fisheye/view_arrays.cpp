#include "fisheye/view_arrays.h"

#include <array>

#include "lens/check.h"

namespace fisheye_calibration::fisheye {
namespace {

// Splits `points` into one array of doubles per channel.
template <std::size_t Channels>
void split(const cv::Mat& points, const std::array<std::vector<double>*, Channels>& arrays,
           const char* function) {
  lens::require(points.empty() || (points.channels() == static_cast<int>(Channels) &&
                                   (points.depth() == CV_32F || points.depth() == CV_64F)),
                "points of every view are of the same type", function);
  cv::Mat values;
  points.convertTo(values, CV_64F);  // also makes them continuous
  const double* next = values.ptr<double>();
  for (auto* array : arrays) {
    array->resize(values.total());
  }
  for (std::size_t i = 0; i < values.total(); ++i) {
    for (auto* array : arrays) {
      (*array)[i] = *next++;
    }
  }
}

}  // namespace

void requireTargetPoints(bool present, const char* function) {
  lens::require(
      present,
      "!objectPoints.empty() && (objectPoints.type() == CV_32FC3 || objectPoints.type() == "
      "CV_64FC3)",
      function);
}

void requireListsOfPoints(cv::InputArrayOfArrays objectPoints, cv::InputArrayOfArrays imagePoints,
                          const char* function) {
  requireTargetPoints(
      !objectPoints.empty() && (objectPoints.type() == CV_32FC3 || objectPoints.type() == CV_64FC3),
      function);
  lens::require(
      !imagePoints.empty() && (imagePoints.type() == CV_32FC2 || imagePoints.type() == CV_64FC2),
      "!imagePoints.empty() && (imagePoints.type() == CV_32FC2 || imagePoints.type() == "
      "CV_64FC2)",
      function);
}

solver::ViewPoints readView(const cv::Mat& objectPoints, const cv::Mat& imagePoints,
                            const char* function) {
  solver::ViewPoints view;
  split<3>(objectPoints, {&view.X, &view.Y, &view.Z}, function);
  split<2>(imagePoints, {&view.image.x, &view.image.y}, function);
  return view;
}

std::vector<solver::ViewPoints> readViews(cv::InputArrayOfArrays objectPoints,
                                          cv::InputArrayOfArrays imagePoints,
                                          const char* function) {
  std::vector<solver::ViewPoints> views;
  const int count = static_cast<int>(objectPoints.total());
  views.reserve(objectPoints.total());
  for (int i = 0; i < count; ++i) {
    views.push_back(readView(objectPoints.getMat(i), imagePoints.getMat(i), function));
  }
  return views;
}

}  // namespace fisheye_calibration::fisheye
