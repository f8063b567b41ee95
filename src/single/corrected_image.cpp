#include <cstdint>
#include <functional>
#include <limits>
#include <opencv2/core.hpp>
#include <span>
#include <vector>

#include "fisheye_calibration.h"
#include "images/pixel_format.h"
#include "images/view.h"
#include "rendering/corrected_view.h"
#include "single/record.h"

namespace fisheye_calibration::single {
namespace {

// The interface is limited to buffers whose size in bytes fits into a 32-bit integer.
void requireAddressable(ImageLong width, ImageLong height, int bytes) {
  if (std::int64_t{width} * height > std::numeric_limits<std::int32_t>::max() / bytes) {
    cv::error(cv::Error::StsNoMem, "an image buffer has more than 2147483647 bytes",
              "SingleCamCorrected", __FILE__, __LINE__);
  }
}

std::size_t sizeInBytes(ImageLong width, ImageLong height, int bytes) {
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
         static_cast<std::size_t>(bytes);
}

using Bytes = std::span<const unsigned char>;

bool overlap(Bytes a, Bytes b) {
  const std::less<const unsigned char*> before;
  return !a.empty() && !b.empty() && before(a.data(), b.data() + b.size()) &&
         before(b.data(), a.data() + a.size());
}

// The view is rendered directly from the frame, so a frame that the output would overwrite is
// copied first. Empty if none of the outputs overlaps it.
std::vector<unsigned char> copyIfOverlapping(Bytes frame, Bytes pixels, Bytes mask) {
  if (overlap(frame, pixels) || overlap(frame, mask)) {
    return {frame.begin(), frame.end()};
  }
  return {};
}

// The zero matrix if the homography is singular; nothing then has content (compatibility 35).
cv::Matx33d inverseHomography(const FishEyeCalibrationParam& param) {
  cv::Matx33d inverse;
  cv::invert(homography(param), inverse, cv::DECOMP_LU);
  return inverse;
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
  requireAddressable(srcWidth, srcHeight, bytes);
  requireAddressable(dstWidth, dstHeight, bytes);
  const std::vector<unsigned char> copy =
      copyIfOverlapping({src, sizeInBytes(srcWidth, srcHeight, bytes)},
                        {dst, sizeInBytes(dstWidth, dstHeight, bytes)},
                        {mask, mask != nullptr ? sizeInBytes(dstWidth, dstHeight, 1) : 0});
  const images::Frame frame{copy.empty() ? src : copy.data(), srcWidth, srcHeight, bytes};
  const cv::Matx33d K(param.fx, param.skewness, param.u0, 0, param.fy, param.v0, 0, 0, 1);
  const rendering::InverseWarp warp{inverseHomography(param), param.ImageDx, param.ImageDy,
                                    cv::Size(dstWidth, dstHeight)};
  const rendering::CorrectedView view(frame, single::rawCamera(param), K, warp);
  if (!view.showsAnything()) {
    return false;
  }
  view.render({dst, dstWidth, dstHeight, bytes}, mask);
  return true;
}
