#include "base/frame_buffer.h"

#include <algorithm>
#include <cstddef>

namespace fisheye_calibration::program {

FrameBuffer blankBuffer(const Size& size, int bitCount) {
  const std::size_t count = static_cast<std::size_t>(size.width) *
                            static_cast<std::size_t>(size.height) *
                            static_cast<std::size_t>(bitCount / 8);
  return {std::vector<unsigned char>(count), size, bitCount};
}

FrameBuffer toBuffer(const cv::Mat& picture) {
  CV_Assert(picture.type() == CV_8UC1 || picture.type() == CV_8UC3);
  FrameBuffer buffer = blankBuffer({picture.cols, picture.rows}, 8 * picture.channels());
  const std::size_t rowBytes = static_cast<std::size_t>(picture.cols) * picture.elemSize();
  unsigned char* to = buffer.data();
  for (int y = picture.rows - 1; y >= 0; --y) {
    to = std::copy_n(picture.ptr(y), rowBytes, to);
  }
  return buffer;
}

cv::Mat toPicture(const FrameBuffer& buffer) {
  cv::Mat picture(buffer.size.height, buffer.size.width, buffer.bitCount == 24 ? CV_8UC3 : CV_8UC1);
  const std::size_t rowBytes = static_cast<std::size_t>(picture.cols) * picture.elemSize();
  const unsigned char* from = buffer.bytes.data();
  for (int y = picture.rows - 1; y >= 0; --y, from += rowBytes) {
    std::copy_n(from, rowBytes, picture.ptr(y));
  }
  return picture;
}

}  // namespace fisheye_calibration::program
