// The result of a calibration as text.
#pragma once

#include <string>

#include "base/size.h"
#include "fisheye_calibration.h"
#include "geometry/calibration_result.h"

namespace fisheye_calibration::program {

// The record as a table of readable lines: name, value, unit, meaning. The filler k2...k5 is left
// out unless `verbose`.
std::string describeRecord(const FishEyeCalibrationParam& param, bool verbose);

// describeRecord, the reprojection error and the five points with the largest residuals.
std::string describeResult(const CalibrationResult& result, bool verbose);

}  // namespace fisheye_calibration::program
