// Camera files, checked as they are loaded.
#pragma once

#include <filesystem>
#include <iosfwd>

#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// Loads a camera file and warns about everything suspicious in it. Fails as bad input where
// loadCamera() does.
FishEyeCalibrationParam loadCheckedCamera(const std::filesystem::path& path,
                                          std::ostream& messages);

}  // namespace fisheye_calibration::program
