// A camera file, read with everything doubtful about it told.
#pragma once

#include <iosfwd>
#include <string>

#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// Fails as bad input like loadCamera; what else is wrong goes to `messages` as warnings.
FishEyeCalibrationParam loadCheckedCamera(const std::string& path, std::ostream& messages);

}  // namespace fisheye_calibration::program
