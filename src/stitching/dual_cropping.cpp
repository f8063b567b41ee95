#include <algorithm>
#include <cstring>

#include "fisheye_calibration.h"
#include "platform/message_box.h"
#include "stitching/doubled_view.h"
#include "stitching/saturation.h"

namespace {

struct Buffer {
  unsigned char* pixels;
  ImageLong width;
  ImageLong height;
};

// Copies what `src` has of the rectangle at (column, row), in buffer rows.
void copyRectangle(const Buffer& src, const Buffer& dst, std::int64_t column, std::int64_t row,
                   int bits) {
  const std::int64_t bytes = bits / 8;
  const std::int64_t begin = std::max<std::int64_t>(0, -column);
  const std::int64_t end = std::min<std::int64_t>(dst.width, src.width - column);
  if (begin >= end) {
    return;
  }
  const std::int64_t top = std::min<std::int64_t>(dst.height, src.height - row);
  for (std::int64_t j = std::max<std::int64_t>(0, -row); j < top; ++j) {
    std::memcpy(dst.pixels + (j * dst.width + begin) * bytes,
                src.pixels + ((row + j) * src.width + column + begin) * bytes,
                static_cast<std::size_t>((end - begin) * bytes));
  }
}

}  // namespace

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
  if (stitching::isSupported(bitCount) && dstWidth > 0 && dstHeight > 0) {
    if (src == nullptr || dst == nullptr) {
      return;
    }
    copyRectangle({src, srcWidth, srcHeight}, {dst, dstWidth, dstHeight}, cropLeft, bottomRow,
                  bitCount);
  }
  dual.StdImageWidth = static_cast<std::int32_t>(dstWidth);
  dual.StdImageHeight = static_cast<std::int32_t>(dstHeight);
  dual.DatumImagePtX = stitching::saturated(std::int64_t{dual.DatumImagePtX} - cropLeft);
  dual.DatumImagePtY = stitching::saturated(dual.DatumImagePtY - bottomRow);
}
