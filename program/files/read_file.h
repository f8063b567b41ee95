// Reads a whole file.
#pragma once

#include <filesystem>
#include <string>

namespace fisheye_calibration::program {

// Fails as bad input if there is no such file or it cannot be read.
std::string readFile(const std::filesystem::path& path);

}  // namespace fisheye_calibration::program
