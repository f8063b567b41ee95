// The nearest source pixels of an inverse homography, run by run.
#pragma once

#include <opencv2/core.hpp>

namespace single {

// An output pixel (x, y) shows the source pixel
//   (trunc(sx + 1/2), trunc(sy + 1/2)), (sx, sy, 1) ~ Hinv (x - dx, y - dy, 1),
// with sx and sy rounded to 32-bit float, if that lies inside a source of the given size.
struct InverseWarp {
  cv::Matx33d Hinv;
  double dx;
  double dy;
  cv::Size size;
};

// The nearest pixel to a position along an axis of `length` pixels, trunc(position + 0.5), so that
// -1.5 < position <= -0.5 still gives 0; -1 when there is none, for NaN, too.
inline int nearestPixel(float position, int length) {
  const double shifted = static_cast<double>(position) + 0.5;
  return shifted > -1 && shifted < length ? static_cast<int>(shifted) : -1;
}

// The source pixels of a run of output pixels (x, y), (x + 1, y) ...: column[k] is -1 where there
// is none. Writes whole runs of fisheye::kRun elements. False only when the whole run lies outside.
bool sourcePixelsOfRun(const InverseWarp& warp, int x, int y, int* column, int* row);

}  // namespace single
