// Where a camera's rendered view shows a point: the chain of steps by which SingleCamCorrected
// renders, for single points.
#pragma once

#include <opencv2/core/types.hpp>
#include <string>

#include "base/size.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// The corrected position c after the second correction: H c + (ImageDx, ImageDy).
cv::Point2d secondCorrected(const FishEyeCalibrationParam& param, cv::Point2d c);

// Where a view of `size` shows the bed point; rows are counted from the top.
cv::Point2d renderedPosition(const FishEyeCalibrationParam& param, cv::Point2d bed,
                             const Size& size);

// The second correction is made for one size of the view, whose centre it leaves in place. This is
// how far it moves the centre of a view of `size`, pixels.
double centreShift(const FishEyeCalibrationParam& param, const Size& size);

// A warning if that is more than a pixel; empty otherwise.
std::string sizeComplaint(const FishEyeCalibrationParam& param, const Size& size);

}  // namespace fisheye_calibration::program
