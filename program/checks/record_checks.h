// What is impossible in a camera record, or makes it of little use.
#pragma once

#include "checks/finding.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

Findings checkRecord(const FishEyeCalibrationParam& param);

}  // namespace fisheye_calibration::program
