#include <functional>
#include <opencv2/core.hpp>
#include <span>
#include <vector>

#include "fisheye_calibration.h"
#include "images/buffer_size.h"
#include "images/pixel_format.h"
#include "images/view.h"
#include "rendering/corrected_view.h"
#include "single/record.h"

namespace fisheye_calibration::single {
namespace {

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
  const Bytes source(src, images::bufferSize(srcWidth, srcHeight, bitCount));
  const Bytes pixels(dst, images::bufferSize(dstWidth, dstHeight, bitCount));
  const Bytes maskBytes(mask, mask != nullptr ? images::bufferSize(dstWidth, dstHeight, 8) : 0);
  const std::vector<unsigned char> copy = copyIfOverlapping(source, pixels, maskBytes);
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
