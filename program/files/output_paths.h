// Checks of where files are to be written, made before any work is done.
#pragma once

#include <filesystem>
#include <string>

namespace fisheye_calibration::program {

// Fails as bad input if no file can be written there: the folder is missing, or the path is a
// folder itself.
void requireWritable(const std::string& option, const std::filesystem::path& path);

// True if both name the same existing file.
bool isSameFile(const std::filesystem::path& a, const std::filesystem::path& b);

// The same for files that need not exist yet: true also if both have the same name.
bool isSamePath(const std::filesystem::path& a, const std::filesystem::path& b);

}  // namespace fisheye_calibration::program
