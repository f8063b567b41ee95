#include "stitching/doubled_view.h"

#include <cstring>
#include <limits>
#include <new>

#include "single/pixel_format.h"
#include "stitching/debug_bitmap.h"
#include "stitching/saturation.h"

namespace stitching {
namespace {

constexpr bool kWritesDebugFiles = FISHEYE_CALIBRATION_DEBUG_FILES != 0;
constexpr std::int64_t kLargestBuffer = std::numeric_limits<std::int32_t>::max();

struct DebugPaths {
  const char* view;
  const char* mask;
};

[[maybe_unused]] DebugPaths debugPaths(Side side) {
  if (side == Side::left) {
    return {"D:/LeftCorrectedImage.bmp", "D:/LeftMaskImage.bmp"};
  }
  return {"D:/RightCorrectedImage.bmp", "D:/RightMaskImage.bmp"};
}

// Bytes of both buffers.
struct BufferSizes {
  std::size_t pixels = 0;
  std::size_t mask = 0;
};

BufferSizes bufferSizes(const Camera& camera) {
  const std::int64_t width = doubledWidth(camera);
  const std::int64_t height = doubledHeight(camera);
  if (width <= 0 || height <= 0) {
    return {};
  }
  const std::int64_t count = width * height;
  if (count > kLargestBuffer) {
    throw std::bad_alloc();
  }
  const std::int64_t pixelBytes = camera.bits > 0 ? count * camera.bits / 8 : 0;
  if (pixelBytes > kLargestBuffer) {
    throw std::bad_alloc();
  }
  return {static_cast<std::size_t>(pixelBytes), static_cast<std::size_t>(count)};
}

// False, with the buffers as they were, when there is nothing to show.
bool correct(const Camera& camera, DoubledView& view) {
  return single::bytesPerPixel(camera.bits) != 0 &&
         SingleCamCorrected(camera.image, camera.width, camera.height, camera.bits, camera.param,
                            view.pixels.get(), view.width, view.height, view.mask.get());
}

DoubledView render(const Camera& camera, const BufferSizes& sizes) {
  DoubledView view;
  view.width = doubledWidth(camera);
  view.height = doubledHeight(camera);
  view.bits = camera.bits;
  view.pixels = std::make_unique_for_overwrite<unsigned char[]>(sizes.pixels);
  view.mask = std::make_unique_for_overwrite<unsigned char[]>(sizes.mask);
  if (!correct(camera, view)) {
    std::memset(view.pixels.get(), 0, sizes.pixels);
    std::memset(view.mask.get(), single::kNoContent, sizes.mask);
  }
  return view;
}

// Failures do not matter: the files only help to look into what happened.
void writeDebugBitmaps([[maybe_unused]] const DoubledView& view, [[maybe_unused]] Side side) {
  if constexpr (kWritesDebugFiles) {
    const DebugPaths paths = debugPaths(side);
    WriteDebugBitmap(view.pixels.get(), view.width, view.height, view.bits, paths.view);
    WriteDebugBitmap(view.mask.get(), view.width, view.height, 8, paths.mask);
  }
}

bool canWriteDebugBitmaps([[maybe_unused]] Side side) {
  if constexpr (kWritesDebugFiles) {
    const DebugPaths paths = debugPaths(side);
    return CanWriteDebugBitmap(paths.view) || CanWriteDebugBitmap(paths.mask);
  }
  return false;
}

}  // namespace

std::int32_t doubledWidth(const Camera& camera) {
  return saturated(2 * std::int64_t{camera.width});
}

std::int32_t doubledHeight(const Camera& camera) {
  return saturated(2 * std::int64_t{camera.height});
}

DoubledView renderDoubledView(const Camera& camera, Side side) {
  DoubledView view = render(camera, bufferSizes(camera));
  writeDebugBitmaps(view, side);
  return view;
}

void renderForDebugBitmaps(const Camera& camera, Side side) {
  const BufferSizes sizes = bufferSizes(camera);
  if (canWriteDebugBitmaps(side)) {
    writeDebugBitmaps(render(camera, sizes), side);
  }
}

}  // namespace stitching
