#include "fisheye_calibration.h"
#include "images/debug_bitmap.h"
#include "images/debug_files.h"
#include "images/pixel_format.h"
#include "stitching/canvas.h"
#include "stitching/doubled_view.h"
#include "stitching/rig_alignment.h"
#include "stitching/saturation.h"

namespace fisheye_calibration::stitching {
namespace {

// Both views must have the canvas's bit count; other bit counts than 8, 24 and 32 leave the canvas
// unchanged (compatibility 54).
bool canCompose(const CameraInput& first, const CameraInput& second, const images::Target& canvas,
                int bits) {
  return canvas.pixels != nullptr && canvas.bytes != 0 && first.bits == bits && second.bits == bits;
}

void composeViews(const CameraInput& first, const CameraInput& second, const CornerPairs& pairs,
                  const images::Target& canvas) {
  const DoubledView firstView = renderDoubledView(first, Side::kLeft);
  const DoubledView secondView = renderDoubledView(second, Side::kRight);
  compose(firstView, secondView, firstToSecond(pairs, first, second, Rows::kBuffer), canvas);
}

// The canvas is a metric image with the first camera's scale and its datum in the first view's
// centre. DatumImagePtY is a buffer row (compatibility 29).
DualFishEyeCalibrationParam describe(const CameraInput& first, const images::Target& canvas) {
  const std::int32_t W1 = doubledWidth(first);
  const std::int32_t H1 = doubledHeight(first);
  const auto offsetY = static_cast<double>(verticalOffset(canvas.height, H1));
  return {.Pixel = first.param.Pixel,
          .StdImageWidth = canvas.width,
          .StdImageHeight = canvas.height,
          .DatumImagePtX = saturated(truncated(W1 * 0.5)),
          .DatumImagePtY = saturated(truncated(H1 * 0.5 + offsetY)),
          .DatumPtXw = first.param.DatumPtXw,
          .DatumPtYw = first.param.DatumPtYw};
}

}  // namespace
}  // namespace fisheye_calibration::stitching

using namespace fisheye_calibration;
using namespace fisheye_calibration::stitching;

bool FishEyeImageStitching(unsigned char* image1, ImageLong width1, ImageLong height1, int bits1,
                           FishEyeCalibrationParam param1, std::vector<CalibrationPoint> points1,
                           unsigned char* image2, ImageLong width2, ImageLong height2, int bits2,
                           FishEyeCalibrationParam param2, std::vector<CalibrationPoint> points2,
                           unsigned char* stitched, ImageLong stitchedWidth,
                           ImageLong stitchedHeight, int stitchedBits,
                           DualFishEyeCalibrationParam& dual) {
  const CameraInput first{image1, width1, height1, bits1, param1, points1};
  const CameraInput second{image2, width2, height2, bits2, param2, points2};
  const images::Target canvas{stitched, stitchedWidth, stitchedHeight,
                              images::bytesPerPixel(stitchedBits)};
  const auto pairs = cornerPairs(first, second);
  if (pairs && canCompose(first, second, canvas, stitchedBits)) {
    composeViews(first, second, *pairs, canvas);
  } else {
    renderForDebugBitmaps(first, Side::kLeft);
    renderForDebugBitmaps(second, Side::kRight);
  }
  if (!pairs) {
    return false;
  }
  if (images::kWritesDebugFiles) {
    WriteDebugBitmap(stitched, stitchedWidth, stitchedHeight, stitchedBits,
                     images::debug_files::kCanvas);
  }
  dual = describe(first, canvas);
  return true;
}
