#include "fisheye_calibration.h"
#include "single/buffer_rectangle.h"

namespace {

// trunc(length/2 + 0.5) of a positive length.
std::int64_t centreOf(ImageLong length) { return (std::int64_t{length} + 1) / 2; }

}  // namespace

void CroppingImage(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight, int bitCount,
                   unsigned char* dst, ImageLong dstWidth, ImageLong dstHeight) {
  single::copyRectangle({src, srcWidth, srcHeight}, bitCount,
                        centreOf(srcWidth) - centreOf(dstWidth),
                        centreOf(srcHeight) - centreOf(dstHeight), {dst, dstWidth, dstHeight});
}
