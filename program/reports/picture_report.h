// What the corrected picture will show of the bed, as text.
#pragma once

#include <opencv2/core/types.hpp>
#include <string>

#include "base/size.h"
#include "calibration/seen_bed.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// "Corrected picture: 1200x800, X 0 ... 300, Y -10 ... 190 mm, 0.25 mm a pixel"
std::string describePicture(const FishEyeCalibrationParam& record, const Size& corrected,
                            const cv::Rect2d& shown);

// What is missing of the wanted part of the bed: "3 % is not seen, 12 % is seen with less than a
// third of the best sharpness"; empty if nothing is. `remedy` is added to what is beyond the
// corrected picture's reach.
std::string describeMissing(const SeenShares& shares, const std::string& remedy = "");

}  // namespace fisheye_calibration::program
