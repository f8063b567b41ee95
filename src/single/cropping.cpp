#include "fisheye_calibration.h"
#include "images/pixel_format.h"
#include "images/rectangle.h"

namespace fisheye_calibration::single {
namespace {

// trunc(length/2 + 0.5) of a positive length, which decides the side that the crop leans toward
// where the parities of source and crop differ (compatibility 41).
std::int64_t centreOf(ImageLong length) { return (std::int64_t{length} + 1) / 2; }

}  // namespace
}  // namespace fisheye_calibration::single

using namespace fisheye_calibration;

void CroppingImage(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight, int bitCount,
                   unsigned char* dst, ImageLong dstWidth, ImageLong dstHeight) {
  using single::centreOf;
  const int bytes = images::bytesPerPixel(bitCount);
  images::copyRectangle({src, srcWidth, srcHeight, bytes}, centreOf(srcWidth) - centreOf(dstWidth),
                        centreOf(srcHeight) - centreOf(dstHeight),
                        {dst, dstWidth, dstHeight, bytes});
}
