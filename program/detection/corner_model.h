// The grey levels around an inner corner of a chessboard.
#pragma once

#include <opencv2/core.hpp>
#include <optional>

namespace fisheye_calibration::program {

// Two edges that cross.
struct CrossedEdges {
  cv::Point2d position;
  double first = 0;  // directions, radians
  double second = 0;
};

struct CornerFit {
  cv::Point2d position;
  double contrast = 0;   // half of the difference between dark and bright, grey levels
  double explained = 0;  // share of the grey levels' variation that the crossed edges explain
};

// The position at which the model fits the grey levels within `radius` pixels best, in the sense of
// least squares, which uses all of the window and so averages out noise. Nothing if there is no
// such minimum in the window or too little of the window lies in the picture.
std::optional<CornerFit> fitCorner(const cv::Mat& grey, const CrossedEdges& start, double radius);

}  // namespace fisheye_calibration::program
