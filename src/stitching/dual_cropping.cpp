#include "fisheye_calibration.h"
#include "images/pixel_format.h"
#include "images/rectangle.h"
#include "platform/message_box.h"
#include "stitching/saturation.h"

using namespace fisheye_calibration;
using stitching::saturated;

void DualCam_CroppingImage(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight,
                           int bitCount, int cropLeft, int cropTop,
                           DualFishEyeCalibrationParam& dual, unsigned char* dst,
                           ImageLong dstWidth, ImageLong dstHeight) {
  if (dstWidth % 4 != 0 || dstHeight % 4 != 0) {
    // (compatibility 5)
    platform::showMessage("裁剪后图像的长和宽必须是4的整数倍！");
    return;
  }
  // Picture rows are counted from the top, buffer rows from the bottom. DatumImagePtY is a buffer
  // row (compatibility 29).
  const std::int64_t bottomRow = std::int64_t{srcHeight} - cropTop - dstHeight;
  const int bytes = images::bytesPerPixel(bitCount);
  if (bytes != 0 && dstWidth > 0 && dstHeight > 0) {
    if (src == nullptr || dst == nullptr) {
      return;
    }
    images::copyRectangle({src, srcWidth, srcHeight, bytes}, cropLeft, bottomRow,
                          {dst, dstWidth, dstHeight, bytes});
  }
  // Also if there are no pixels to copy, such as a height below 1 (compatibility 55).
  dual.StdImageWidth = dstWidth;
  dual.StdImageHeight = dstHeight;
  dual.DatumImagePtX = saturated(std::int64_t{dual.DatumImagePtX} - cropLeft);
  dual.DatumImagePtY = saturated(dual.DatumImagePtY - bottomRow);
}
