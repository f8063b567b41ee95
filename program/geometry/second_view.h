// Where a camera's rendered view shows what: the chain that SingleCamCorrected renders by, carried
// out for single points.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <string>

#include "commands/arguments.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// Picture position (rows from the top) in a view of `size` at which the bed point is rendered:
// corrected point c = WorldToCorrectedImagePoint, then H c + (ImageDx, ImageDy).
cv::Point2d renderedPlace(const FishEyeCalibrationParam& param, cv::Point2d bed, const Size& size);

// The bed point that the camera sees at a raw pixel: WorldToRawImagePoint inverted by Newton steps
// from `start`, good to about a thousandth of a raw pixel. Nothing where they do not converge.
std::optional<cv::Point2d> bedPointAt(const FishEyeCalibrationParam& param, cv::Point2d raw,
                                      cv::Point2d start);

// The second correction is made for one size of the view, whose centre it leaves in place. How far
// it moves the centre of another size, pixels.
double centreShift(const FishEyeCalibrationParam& param, const Size& size);

// A warning where that is more than a pixel; empty otherwise.
std::string sizeComplaint(const FishEyeCalibrationParam& param, const Size& size);

}  // namespace fisheye_calibration::program
