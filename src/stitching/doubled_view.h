// What both stitching operations work on: each camera's corrected image at twice the size of its
// frame, with its mask.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "fisheye_calibration.h"
#include "images/pixel_format.h"
#include "images/view.h"

namespace fisheye_calibration::stitching {

// One camera as the host hands it over. Any of it may be unusable.
struct CameraInput {
  unsigned char* image;
  ImageLong width;
  ImageLong height;
  int bits;
  const FishEyeCalibrationParam& param;
  const std::vector<CalibrationPoint>& points;
};

// Twice the frame's size, at most what 32 bits hold.
std::int32_t doubledWidth(const CameraInput& camera);
std::int32_t doubledHeight(const CameraInput& camera);

// The first camera's files are called left, the second's right.
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

// Corrects the camera's frame and writes view and mask as debug bitmaps. A frame that cannot be
// corrected gives a black view without content. Raises std::bad_alloc when a buffer would take more
// than 2^31 - 1 bytes.
DoubledView renderDoubledView(const CameraInput& camera, Side side);

// The same for the sake of the debug bitmaps alone: where none of them can be opened nothing is
// rendered.
void renderForDebugBitmaps(const CameraInput& camera, Side side);

}  // namespace fisheye_calibration::stitching
