// The two stitching operations for frames and canvases with rows of any stride.
#pragma once

#include <cstdint>
#include <optional>

#include "fisheye_calibration.h"
#include "images/view.h"
#include "stitching/doubled_view.h"

namespace fisheye_calibration::stitching {

struct StitchedSize {
  std::int32_t width;
  std::int32_t height;
};

// As ComputeStitchedImageSize; std::nullopt where that returns false.
std::optional<StitchedSize> stitchedSize(const CameraInput& first, const CameraInput& second);

// As FishEyeImageStitching but for the canvas's own debug bitmap; `bits` is the canvas's bit count,
// from its first to its last byte it has at most 2^31 - 1 bytes.
std::optional<DualFishEyeCalibrationParam> stitch(const CameraInput& first,
                                                  const CameraInput& second,
                                                  const images::Target& canvas, int bits);

}  // namespace fisheye_calibration::stitching
