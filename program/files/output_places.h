// Whether a file can be written where the user wants it, asked before any work is done.
#pragma once

#include <string>

namespace fisheye_calibration::program {

// Fails as bad input if the path cannot be a file to write: its folder is missing, or it is a
// folder itself.
void requireWritablePlace(const std::string& option, const std::string& path);

// True if both name the same existing file.
bool isSameFile(const std::string& a, const std::string& b);

}  // namespace fisheye_calibration::program
