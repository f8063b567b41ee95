// An inverse homography that is applied pixel by pixel.
#pragma once

#include <opencv2/core.hpp>

#include "images/nearest_pixel.h"

namespace fisheye_calibration::rendering {

// An output pixel (x, y) shows the source pixel
//   (trunc(sx + 1/2), trunc(sy + 1/2)), (sx, sy, 1) ~ Hinv (x - dx, y - dy, 1),
// with sx and sy rounded to 32-bit float, if that lies inside a source of the given size
// (compatibility 40). The output has the same size.
struct InverseWarp {
  cv::Matx33d Hinv;
  double dx;
  double dy;
  cv::Size size;
};

struct SourcePixel {
  int column;  // -1 if the output pixel shows none
  int row;
};

inline SourcePixel sourcePixel(const InverseWarp& warp, int x, int y) {
  const double px = x - warp.dx;
  const double py = y - warp.dy;
  const cv::Matx33d& H = warp.Hinv;
  const auto sum = [&](int i) { return (H(i, 0) * px + H(i, 1) * py) + H(i, 2); };
  const double w = sum(2);
  const int column = images::nearestPixel(static_cast<float>(sum(0) / w), warp.size.width);
  const int row = images::nearestPixel(static_cast<float>(sum(1) / w), warp.size.height);
  return column < 0 || row < 0 ? SourcePixel{-1, -1} : SourcePixel{column, row};
}

}  // namespace fisheye_calibration::rendering
