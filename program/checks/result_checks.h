// Whether the result of a calibration is to be trusted.
#pragma once

#include "base/size.h"
#include "checks/finding.h"
#include "geometry/calibration_result.h"

namespace fisheye_calibration::program {

Findings checkResult(const CalibrationResult& result, const Size& image);

}  // namespace fisheye_calibration::program
