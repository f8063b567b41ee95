// Saddle points of the brightness: where two dark and two bright sectors meet, as at the inner
// corners of a chessboard.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace fisheye_calibration::program {

struct SaddlePoint {
  cv::Point2d position;
  cv::Point2d axis;  // (cos 2a, sin 2a), if the bright sectors lie in the directions a and a + pi
  double contrast = 0;  // amplitude of the alternation around the point, grey levels
};

// `smooth` is the picture after smoothed(). The strongest points first; at most `limit` of them.
std::vector<SaddlePoint> findSaddlePoints(const cv::Mat& smooth, std::size_t limit);

// Grey as floats, smoothed as findSaddlePoints() needs it.
cv::Mat smoothed(const cv::Mat& grey);

}  // namespace fisheye_calibration::program
