// The input of both stitching operations: each camera's corrected image at twice the size of its
// frame, with its mask.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "fisheye_calibration.h"
#include "images/pixel_format.h"
#include "images/view.h"

namespace fisheye_calibration::stitching {

// One camera as passed by the host; nothing in it has been checked.
struct CameraInput {
  const unsigned char* image;
  ImageLong width;
  ImageLong height;
  int bits;
  const FishEyeCalibrationParam& param;
  const std::vector<CalibrationPoint>& points;
  std::ptrdiff_t step = 0;  // of the frame's rows, see images::View
  bool writesDebugBitmaps = true;
};

// Whether the host passed a picture that has pixels.
bool hasFrame(const CameraInput& camera);

images::Frame frameOf(const CameraInput& camera);

// Twice the size of the frame, saturated to 32 bits.
std::int32_t doubledWidth(const CameraInput& camera);
std::int32_t doubledHeight(const CameraInput& camera);

// Names the debug files: the first camera is the left one, the second the right one.
enum class Side { kLeft, kRight };

struct DoubledView {
  std::int32_t width = 0;
  std::int32_t height = 0;
  int bits = 0;
  std::unique_ptr<unsigned char[]> pixels;  // rows bottom-up, no padding
  std::unique_ptr<unsigned char[]> mask;    // below 255: the pixel shows image content

  images::Target picture() const {
    return {pixels.get(), width, height, images::bytesPerPixel(bits)};
  }
  images::Target validity() const { return {mask.get(), width, height, 1}; }
};

// Throws std::bad_alloc if the view or its mask would exceed 2^31 - 1 bytes.
void requireAddressable(const CameraInput& camera);

// Whether any debug bitmap of that camera, on that side, is wanted and can be written.
bool canWriteDebugBitmaps(const CameraInput& camera, Side side);

// Corrects the camera's frame and writes the view and its mask as debug bitmaps. A frame that
// cannot be corrected gives a black view without content. Throws std::bad_alloc if a buffer would
// exceed 2^31 - 1 bytes.
DoubledView renderDoubledView(const CameraInput& camera, Side side);

// The same for the debug bitmaps only: renders nothing if none of them can be written.
void renderForDebugBitmaps(const CameraInput& camera, Side side);

}  // namespace fisheye_calibration::stitching
