// The corrected view that a camera record describes.
#pragma once

#include <opencv2/core.hpp>
#include <optional>

#include "fisheye_calibration.h"
#include "images/view.h"
#include "rendering/corrected_view.h"

namespace fisheye_calibration::single {

// The corrected view of the frame in an image of `size`; std::nullopt if there is nothing to show
// (compatibility 34). The frame must outlive it, and neither may be empty.
std::optional<rendering::CorrectedView> correctedViewOf(const images::Frame& frame,
                                                        const FishEyeCalibrationParam& param,
                                                        const cv::Size& size);

}  // namespace fisheye_calibration::single
