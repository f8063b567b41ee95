// The camera's parameters with how far off they may be.
#pragma once

#include <string>

#include "reports/calibration_json.h"

namespace fisheye_calibration::program {

// With 95 % intervals where the robust solver gives them.
std::string cameraTable(const CalibrationReport& report);

}  // namespace fisheye_calibration::program
