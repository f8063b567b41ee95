#include "single/cropping.h"

#include "fisheye_calibration.h"
#include "images/pixel_format.h"
#include "images/rectangle.h"

namespace fisheye_calibration::single {
namespace {

// trunc(length/2 + 0.5) of a positive length, which decides the side that the crop leans toward
// where the parities of source and crop differ (compatibility 41).
std::int64_t centreOf(ImageLong length) { return (std::int64_t{length} + 1) / 2; }

}  // namespace

void cropCentred(const images::Frame& from, const images::Target& to) {
  images::copyRectangle(from, centreOf(from.width) - centreOf(to.width),
                        centreOf(from.height) - centreOf(to.height), to);
}

}  // namespace fisheye_calibration::single

using namespace fisheye_calibration;

void CroppingImage(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight, int bitCount,
                   unsigned char* dst, ImageLong dstWidth, ImageLong dstHeight) {
  const int bytes = images::bytesPerPixel(bitCount);
  single::cropCentred({src, srcWidth, srcHeight, bytes}, {dst, dstWidth, dstHeight, bytes});
}
