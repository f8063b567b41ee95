// What both stitching operations work on: each camera's corrected image at twice the size of its
// frame, with its mask.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "fisheye_calibration.h"

namespace stitching {

// One camera as the host hands it over.
struct Camera {
  unsigned char* image;
  ImageLong width;
  ImageLong height;
  int bits;
  const FishEyeCalibrationParam& param;
  const std::vector<CalibrationPoint>& points;
};

// Twice the frame's size, at most what 32 bits hold.
std::int32_t doubledWidth(const Camera& camera);
std::int32_t doubledHeight(const Camera& camera);

// The first camera's files are called left, the second's right.
enum class Side { left, right };

struct DoubledView {
  std::int32_t width = 0;
  std::int32_t height = 0;
  int bits = 0;
  std::unique_ptr<unsigned char[]> pixels;  // rows bottom-up, no padding
  std::unique_ptr<unsigned char[]> mask;    // below 255: the pixel shows image content
};

// Corrects the camera's frame and writes view and mask as debug bitmaps. A frame that cannot be
// corrected gives a black view without content. Raises std::bad_alloc when a buffer would take more
// than 2^31 - 1 bytes.
DoubledView renderDoubledView(const Camera& camera, Side side);

// The same for the sake of the debug bitmaps alone: where none of them can be opened nothing is
// rendered.
void renderForDebugBitmaps(const Camera& camera, Side side);

}  // namespace stitching
