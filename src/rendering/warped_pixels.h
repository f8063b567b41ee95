// The nearest source pixels of an inverse homography, run by run.
#pragma once

#include <opencv2/core.hpp>

namespace fisheye_calibration::rendering {

// An output pixel (x, y) shows the source pixel
//   (trunc(sx + 1/2), trunc(sy + 1/2)), (sx, sy, 1) ~ Hinv (x - dx, y - dy, 1),
// with sx and sy rounded to 32-bit float, if that lies inside a source of the given size
// (compatibility 40).
struct InverseWarp {
  cv::Matx33d Hinv;
  double dx;
  double dy;
  cv::Size size;
};

// The source pixels of a run of output pixels (x, y), (x + 1, y) ...: column[k] is -1 if there is
// none. Writes whole runs of kRun elements. Returns false only if the whole run lies outside.
bool sourcePixelsOfRun(const InverseWarp& warp, int x, int y, int* column, int* row);

}  // namespace fisheye_calibration::rendering
