// Whether a file can be written where the user wants it, asked before any work is done.
#pragma once

#include <filesystem>
#include <string>

namespace fisheye_calibration::program {

// Fails as bad input if the path cannot be a file to write: its folder is missing, or it is a
// folder itself.
void requireWritablePlace(const std::string& option, const std::filesystem::path& path);

// True if both name the same existing file.
bool isSameFile(const std::filesystem::path& a, const std::filesystem::path& b);

// The same for files that need not exist yet: also true if both have the same name.
bool isSamePlace(const std::filesystem::path& a, const std::filesystem::path& b);

}  // namespace fisheye_calibration::program
