// Where a camera's rendered view shows a point: the chain of steps by which SingleCamCorrected
// renders, for single points.
#pragma once

#include <opencv2/core/types.hpp>
#include <optional>
#include <string>

#include "base/size.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// The corrected position c after the second correction: H c + (ImageDx, ImageDy).
cv::Point2d secondCorrected(const FishEyeCalibrationParam& param, cv::Point2d c);

// The principal point of the rendered view: half a pixel beyond the centre that the library's
// mappings use if the width or height is odd.
cv::Point2f renderedCentreOf(const Size& size);

// Where a view of `size` shows the bed point; rows are counted from the top.
cv::Point2d renderedPosition(const FishEyeCalibrationParam& param, cv::Point2d bed,
                             const Size& size);

// The second correction is made for one size of the view, whose centre shows the datum point. This
// is how far off it a view of `size` shows that point, pixels.
double centreShift(const FishEyeCalibrationParam& param, const Size& size);

// What is wrong if that is more than rounding; empty otherwise.
// `made` is the size that the second correction is known to be made for: then no other one fits.
std::string sizeComplaint(const FishEyeCalibrationParam& param, const std::optional<Size>& made,
                          const Size& size);

}  // namespace fisheye_calibration::program
