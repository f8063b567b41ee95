#include "single/corrected_image.h"

#include <cstddef>
#include <cstring>
#include <opencv2/core.hpp>
#include <vector>

#include "images/buffer_size.h"
#include "images/overlap.h"
#include "images/pixel_format.h"
#include "single/corrected_view_of.h"

namespace fisheye_calibration::single {
namespace {

std::vector<unsigned char> copyWithoutPadding(const images::Frame& frame) {
  const std::size_t length = frame.rowBytes();
  std::vector<unsigned char> copy(length * static_cast<std::size_t>(frame.height));
  for (std::int32_t row = 0; row < frame.height; ++row) {
    std::memcpy(copy.data() + length * static_cast<std::size_t>(row), frame.bufferRow(row), length);
  }
  return copy;
}

}  // namespace

// The view is rendered directly from the frame, so a frame that the output would overwrite is
// copied first.
bool renderCorrected(const images::Frame& frame, const FishEyeCalibrationParam& param,
                     const images::Target& view, const images::Target& mask) {
  std::vector<unsigned char> copy;
  images::Frame source = frame;
  if (images::overlap(frame.memory(), view.memory()) ||
      (mask.pixels != nullptr && images::overlap(frame.memory(), mask.memory()))) {
    copy = copyWithoutPadding(frame);
    source = {copy.data(), frame.width, frame.height, frame.bytes};
  }
  const auto corrected = correctedViewOf(source, param, cv::Size(view.width, view.height));
  if (!corrected) {
    return false;
  }
  corrected->render(view, mask);
  return true;
}

}  // namespace fisheye_calibration::single

using namespace fisheye_calibration;

bool SingleCamCorrected(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight, int bitCount,
                        FishEyeCalibrationParam param, unsigned char* dst, ImageLong dstWidth,
                        ImageLong dstHeight, unsigned char* mask) {
  const int bytes = images::bytesPerPixel(bitCount);
  if (src == nullptr || dst == nullptr || dstWidth <= 0 || dstHeight <= 0 || srcWidth <= 0 ||
      srcHeight <= 0 || bytes == 0) {
    return false;
  }
  images::bufferSize(srcWidth, srcHeight, bitCount);  // throws for buffers that are too large
  images::bufferSize(dstWidth, dstHeight, bitCount);
  return single::renderCorrected({src, srcWidth, srcHeight, bytes}, param,
                                 {dst, dstWidth, dstHeight, bytes}, {mask, dstWidth, dstHeight, 1});
}
