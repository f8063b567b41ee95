#include <opencv2/core.hpp>
#include <span>
#include <vector>

#include "fisheye_calibration.h"
#include "images/buffer_size.h"
#include "images/overlap.h"
#include "images/pixel_format.h"
#include "images/view.h"
#include "single/corrected_view_of.h"

namespace fisheye_calibration::single {
namespace {

using Bytes = std::span<const unsigned char>;

// The view is rendered directly from the frame, so a frame that the output would overwrite is
// copied first. Empty if none of the outputs overlaps it.
std::vector<unsigned char> copyIfOverlapping(Bytes frame, Bytes pixels, Bytes mask) {
  if (images::overlap(frame, pixels) || images::overlap(frame, mask)) {
    return {frame.begin(), frame.end()};
  }
  return {};
}

}  // namespace
}  // namespace fisheye_calibration::single

using namespace fisheye_calibration;
using namespace fisheye_calibration::single;

bool SingleCamCorrected(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight, int bitCount,
                        FishEyeCalibrationParam param, unsigned char* dst, ImageLong dstWidth,
                        ImageLong dstHeight, unsigned char* mask) {
  const int bytes = images::bytesPerPixel(bitCount);
  if (src == nullptr || dst == nullptr || dstWidth <= 0 || dstHeight <= 0 || srcWidth <= 0 ||
      srcHeight <= 0 || bytes == 0) {
    return false;
  }
  const Bytes source(src, images::bufferSize(srcWidth, srcHeight, bitCount));
  const Bytes pixels(dst, images::bufferSize(dstWidth, dstHeight, bitCount));
  const Bytes maskBytes(mask, mask != nullptr ? images::bufferSize(dstWidth, dstHeight, 8) : 0);
  const std::vector<unsigned char> copy = copyIfOverlapping(source, pixels, maskBytes);
  const images::Frame frame{copy.empty() ? src : copy.data(), srcWidth, srcHeight, bytes};
  const auto view = correctedViewOf(frame, param, cv::Size(dstWidth, dstHeight));
  if (!view) {
    return false;
  }
  view->render({dst, dstWidth, dstHeight, bytes}, mask);
  return true;
}
