#include "fisheye_calibration.h"
#include "platform/message_box.h"
#include "single/buffer_rectangle.h"
#include "single/pixel_format.h"
#include "stitching/saturation.h"

void DualCam_CroppingImage(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight,
                           int bitCount, int cropLeft, int cropTop,
                           DualFishEyeCalibrationParam& dual, unsigned char* dst,
                           ImageLong dstWidth, ImageLong dstHeight) {
  if (dstWidth % 4 != 0 || dstHeight % 4 != 0) {
    platform::showMessage("裁剪后图像的长和宽必须是4的整数倍！");
    return;
  }
  // The picture's rows are counted from the top, the buffer's from the bottom.
  const std::int64_t bottomRow = std::int64_t{srcHeight} - cropTop - dstHeight;
  if (single::bytesPerPixel(bitCount) != 0 && dstWidth > 0 && dstHeight > 0) {
    if (src == nullptr || dst == nullptr) {
      return;
    }
    single::copyRectangle({src, srcWidth, srcHeight}, bitCount, cropLeft, bottomRow,
                          {dst, dstWidth, dstHeight});
  }
  dual.StdImageWidth = static_cast<std::int32_t>(dstWidth);
  dual.StdImageHeight = static_cast<std::int32_t>(dstHeight);
  dual.DatumImagePtX = stitching::saturated(std::int64_t{dual.DatumImagePtX} - cropLeft);
  dual.DatumImagePtY = stitching::saturated(dual.DatumImagePtY - bottomRow);
}
