// Pictures as the library takes them: rows bottom-up, no padding, 8 or 24 bits a pixel.
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

// Black, of the given kind.
FrameBuffer blankBuffer(const Size& size, int bitCount);

// Of a one- or three-channel 8-bit picture.
FrameBuffer toBuffer(const cv::Mat& picture);

cv::Mat toPicture(const FrameBuffer& buffer);

}  // namespace fisheye_calibration::program
