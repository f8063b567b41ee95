// A whole file in memory.
#pragma once

#include <string>

namespace fisheye_calibration::program {

// Fails as bad input if there is no such file or it cannot be read.
std::string readFile(const std::string& path);

}  // namespace fisheye_calibration::program
