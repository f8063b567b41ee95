#include "stitching/doubled_view.h"

#include <cstring>

#include "images/buffer_size.h"
#include "images/debug_bitmap.h"
#include "images/debug_files.h"
#include "images/pixel_format.h"
#include "single/corrected_image.h"
#include "stitching/saturation.h"

namespace fisheye_calibration::stitching {
namespace {

struct DebugPaths {
  const char* view;
  const char* mask;
};

DebugPaths debugPaths(Side side) {
  if (side == Side::kLeft) {
    return {images::debug_files::kLeftView, images::debug_files::kLeftMask};
  }
  return {images::debug_files::kRightView, images::debug_files::kRightMask};
}

// Sizes of both buffers in bytes.
struct BufferSizes {
  std::size_t pixels = 0;
  std::size_t mask = 0;
};

BufferSizes bufferSizes(const CameraInput& camera) {
  const std::int64_t width = doubledWidth(camera);
  const std::int64_t height = doubledHeight(camera);
  return {images::bufferSize(width, height, camera.bits), images::bufferSize(width, height, 8)};
}

// Returns false, with the buffers unchanged, if there is nothing to show.
bool correct(const CameraInput& camera, DoubledView& view) {
  return images::bytesPerPixel(camera.bits) != 0 && hasFrame(camera) &&
         single::renderCorrected(frameOf(camera), camera.param, view.picture(), view.validity());
}

DoubledView render(const CameraInput& camera, const BufferSizes& sizes) {
  DoubledView view;
  view.width = doubledWidth(camera);
  view.height = doubledHeight(camera);
  view.bits = camera.bits;
  view.pixels = std::make_unique_for_overwrite<unsigned char[]>(sizes.pixels);
  view.mask = std::make_unique_for_overwrite<unsigned char[]>(sizes.mask);
  if (!correct(camera, view)) {
    std::memset(view.pixels.get(), 0, sizes.pixels);
    std::memset(view.mask.get(), images::kNoContent, sizes.mask);
  }
  return view;
}

void writeDebugBitmaps(const DoubledView& view, Side side) {
  if (!images::kWritesDebugFiles) {
    return;
  }
  const DebugPaths paths = debugPaths(side);
  WriteDebugBitmap(view.pixels.get(), view.width, view.height, view.bits, paths.view);
  WriteDebugBitmap(view.mask.get(), view.width, view.height, 8, paths.mask);
}

}  // namespace

bool hasFrame(const CameraInput& camera) {
  return camera.image != nullptr && camera.width > 0 && camera.height > 0;
}

images::Frame frameOf(const CameraInput& camera) {
  return {camera.image, camera.width, camera.height, images::bytesPerPixel(camera.bits),
          camera.step};
}

std::int32_t doubledWidth(const CameraInput& camera) {
  return saturated(2 * std::int64_t{camera.width});
}

std::int32_t doubledHeight(const CameraInput& camera) {
  return saturated(2 * std::int64_t{camera.height});
}

void requireAddressable(const CameraInput& camera) { bufferSizes(camera); }

bool canWriteDebugBitmaps(const CameraInput& camera, Side side) {
  const DebugPaths paths = debugPaths(side);
  return images::kWritesDebugFiles && camera.writesDebugBitmaps &&
         (CanWriteDebugBitmap(paths.view) || CanWriteDebugBitmap(paths.mask));
}

DoubledView renderDoubledView(const CameraInput& camera, Side side) {
  DoubledView view = render(camera, bufferSizes(camera));
  if (camera.writesDebugBitmaps) {
    writeDebugBitmaps(view, side);
  }
  return view;
}

void renderForDebugBitmaps(const CameraInput& camera, Side side) {
  const BufferSizes sizes = bufferSizes(camera);
  if (canWriteDebugBitmaps(camera, side)) {
    writeDebugBitmaps(render(camera, sizes), side);
  }
}

}  // namespace fisheye_calibration::stitching
