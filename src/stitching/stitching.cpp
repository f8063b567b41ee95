#include "stitching/stitching.h"

#include <opencv2/core.hpp>
#include <optional>

#include "fisheye_calibration.h"
#include "images/debug_bitmap.h"
#include "images/debug_files.h"
#include "images/overlap.h"
#include "images/pixel_format.h"
#include "images/view.h"
#include "platform/parallel_rows.h"
#include "rendering/corrected_view.h"
#include "single/corrected_view_of.h"
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

// Whether writing the canvas changes the camera's frame. The sizes must be addressable.
bool overlaps(const CameraInput& camera, const images::Target& canvas) {
  return hasFrame(camera) && images::overlap(frameOf(camera).memory(), canvas.memory());
}

std::optional<rendering::CorrectedView> doubledViewOnDemand(const CameraInput& camera) {
  if (!hasFrame(camera)) {
    return std::nullopt;
  }
  return single::correctedViewOf(frameOf(camera), camera.param,
                                 cv::Size(doubledWidth(camera), doubledHeight(camera)));
}

// Whole views are needed for debug bitmaps, and where the canvas overwrites a frame.
std::optional<RowBudget> budgetOnDemand(const CameraInput& first, const CameraInput& second,
                                        const cv::Matx33d& M, const images::Target& canvas) {
  if (canWriteDebugBitmaps(first, Side::kLeft) || canWriteDebugBitmaps(second, Side::kRight)) {
    return std::nullopt;
  }
  requireAddressable(first);
  requireAddressable(second);
  if (overlaps(first, canvas) || overlaps(second, canvas)) {
    return std::nullopt;
  }
  return rowBudget(M, cv::Size(doubledWidth(second), doubledHeight(second)),
                   cv::Size(canvas.width, canvas.height),
                   verticalOffset(canvas.height, doubledHeight(first)), platform::rowThreads());
}

void composeViews(const CameraInput& first, const CameraInput& second, const CornerPairs& pairs,
                  const images::Target& canvas) {
  const cv::Matx33d M = firstToSecond(pairs, first, second, Rows::kBuffer);
  if (const auto budget = budgetOnDemand(first, second, M, canvas)) {
    const auto firstView = doubledViewOnDemand(first);
    const auto secondView = doubledViewOnDemand(second);
    composeOnDemand({doubledHeight(first), firstView ? &*firstView : nullptr},
                    {doubledHeight(second), secondView ? &*secondView : nullptr}, M, canvas,
                    *budget);
    return;
  }
  const DoubledView firstView = renderDoubledView(first, Side::kLeft);
  const DoubledView secondView = renderDoubledView(second, Side::kRight);
  compose(firstView, secondView, M, canvas);
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

std::optional<DualFishEyeCalibrationParam> stitch(const CameraInput& first,
                                                  const CameraInput& second,
                                                  const images::Target& canvas, int bits) {
  const auto pairs = cornerPairs(first, second);
  if (pairs && canCompose(first, second, canvas, bits)) {
    composeViews(first, second, *pairs, canvas);
  } else {
    renderForDebugBitmaps(first, Side::kLeft);
    renderForDebugBitmaps(second, Side::kRight);
  }
  if (!pairs) {
    return std::nullopt;
  }
  return describe(first, canvas);
}

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
  const auto described = stitch(first, second, canvas, stitchedBits);
  if (!described) {
    return false;
  }
  if (images::kWritesDebugFiles) {
    WriteDebugBitmap(stitched, stitchedWidth, stitchedHeight, stitchedBits,
                     images::debug_files::kCanvas);
  }
  dual = *described;
  return true;
}
