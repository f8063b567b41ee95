// Pictures as the library expects them: rows bottom-up, no padding, 8 or 24 bits per pixel.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "base/size.h"

namespace fisheye_calibration::program {

struct FrameBuffer {
  std::vector<unsigned char> bytes;
  Size size;
  int bitCount = 0;

  unsigned char* data() { return bytes.data(); }
};

// A black picture.
FrameBuffer blankBuffer(const Size& size, int bitCount);

// `picture` has one or three channels of 8 bits.
FrameBuffer toBuffer(const cv::Mat& picture);

cv::Mat toPicture(const FrameBuffer& buffer);

}  // namespace fisheye_calibration::program
