// Cropping a stitched image with rows of any stride.
#pragma once

#include <cstdint>

#include "fisheye_calibration.h"
#include "images/view.h"

namespace fisheye_calibration::stitching {

// As DualCam_CroppingImage, for any size of `to`. Both have the same bytes per pixel.
void cropStitched(const images::Frame& from, std::int32_t left, std::int32_t top,
                  const images::Target& to, DualFishEyeCalibrationParam& dual);

}  // namespace fisheye_calibration::stitching
