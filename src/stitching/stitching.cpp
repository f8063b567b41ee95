#include "fisheye_calibration.h"
#include "single/pixel_format.h"
#include "stitching/canvas.h"
#include "stitching/debug_bitmap.h"
#include "stitching/doubled_view.h"
#include "stitching/rig_alignment.h"
#include "stitching/saturation.h"

namespace {

using stitching::Camera;
using stitching::Canvas;
using stitching::DoubledView;
using stitching::Side;

bool canCompose(const Camera& first, const Camera& second, const Canvas& canvas) {
  return canvas.pixels != nullptr && single::bytesPerPixel(canvas.bits) != 0 &&
         first.bits == canvas.bits && second.bits == canvas.bits;
}

void composeViews(const Camera& first, const Camera& second, const stitching::CornerPairs& pairs,
                  const Canvas& canvas) {
  const DoubledView firstView = stitching::renderDoubledView(first, Side::left);
  const DoubledView secondView = stitching::renderDoubledView(second, Side::right);
  const cv::Matx33d M = stitching::firstToSecond(pairs, first, second, stitching::Rows::buffer);
  stitching::compose(firstView, secondView, M, canvas);
}

void writeDebugBitmap([[maybe_unused]] const Canvas& canvas) {
  if constexpr (FISHEYE_CALIBRATION_DEBUG_FILES != 0) {
    WriteDebugBitmap(canvas.pixels, canvas.width, canvas.height, canvas.bits, "D:/DImage.bmp");
  }
}

// The canvas is a metric image of the first camera's scale whose datum is the first view's centre.
DualFishEyeCalibrationParam describe(const Camera& first, const Canvas& canvas) {
  const std::int32_t W1 = stitching::doubledWidth(first);
  const std::int32_t H1 = stitching::doubledHeight(first);
  const std::int64_t offsetY = stitching::verticalOffset(canvas.height, H1);
  DualFishEyeCalibrationParam dual{};
  dual.Pixel = first.param.Pixel;
  dual.StdImageWidth = canvas.width;
  dual.StdImageHeight = canvas.height;
  dual.DatumImagePtX = stitching::saturated(stitching::truncated(W1 * 0.5));
  dual.DatumImagePtY =
      stitching::saturated(stitching::truncated(H1 * 0.5 + static_cast<double>(offsetY)));
  dual.DatumPtXw = first.param.DatumPtXw;
  dual.DatumPtYw = first.param.DatumPtYw;
  return dual;
}

}  // namespace

bool FishEyeImageStitching(unsigned char* image1, ImageLong width1, ImageLong height1, int bits1,
                           FishEyeCalibrationParam param1, std::vector<CalibrationPoint> points1,
                           unsigned char* image2, ImageLong width2, ImageLong height2, int bits2,
                           FishEyeCalibrationParam param2, std::vector<CalibrationPoint> points2,
                           unsigned char* stitched, ImageLong stitchedWidth,
                           ImageLong stitchedHeight, int stitchedBits,
                           DualFishEyeCalibrationParam& dual) {
  const Camera first{image1, width1, height1, bits1, param1, points1};
  const Camera second{image2, width2, height2, bits2, param2, points2};
  const Canvas canvas{stitched, static_cast<std::int32_t>(stitchedWidth),
                      static_cast<std::int32_t>(stitchedHeight), stitchedBits};
  const auto pairs = stitching::cornerPairs(first, second);
  if (pairs && canCompose(first, second, canvas)) {
    composeViews(first, second, *pairs, canvas);
  } else {
    stitching::renderForDebugBitmaps(first, Side::left);
    stitching::renderForDebugBitmaps(second, Side::right);
  }
  if (!pairs) {
    return false;
  }
  writeDebugBitmap(canvas);
  dual = describe(first, canvas);
  return true;
}
