#include "stitching/dual_cropping.h"

#include "images/pixel_format.h"
#include "images/rectangle.h"
#include "platform/message_box.h"
#include "stitching/saturation.h"

namespace fisheye_calibration::stitching {

void cropStitched(const images::Frame& from, std::int32_t left, std::int32_t top,
                  const images::Target& to, DualFishEyeCalibrationParam& dual) {
  // Picture rows are counted from the top, buffer rows from the bottom. DatumImagePtY is a buffer
  // row (compatibility 29).
  const std::int64_t bottomRow = std::int64_t{from.height} - top - to.height;
  if (to.bytes != 0 && to.width > 0 && to.height > 0) {
    if (from.pixels == nullptr || to.pixels == nullptr) {
      return;
    }
    images::copyRectangle(from, left, bottomRow, to);
  }
  // Also if there are no pixels to copy, such as a height below 1 (compatibility 55).
  dual.StdImageWidth = to.width;
  dual.StdImageHeight = to.height;
  dual.DatumImagePtX = saturated(std::int64_t{dual.DatumImagePtX} - left);
  dual.DatumImagePtY = saturated(dual.DatumImagePtY - bottomRow);
}

}  // namespace fisheye_calibration::stitching

using namespace fisheye_calibration;

void DualCam_CroppingImage(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight,
                           int bitCount, int cropLeft, int cropTop,
                           DualFishEyeCalibrationParam& dual, unsigned char* dst,
                           ImageLong dstWidth, ImageLong dstHeight) {
  if (dstWidth % 4 != 0 || dstHeight % 4 != 0) {
    // (compatibility 5)
    platform::showMessage("裁剪后图像的长和宽必须是4的整数倍！");
    return;
  }
  const int bytes = images::bytesPerPixel(bitCount);
  stitching::cropStitched({src, srcWidth, srcHeight, bytes}, cropLeft, cropTop,
                          {dst, dstWidth, dstHeight, bytes}, dual);
}
