// File names as the program carries them, texts in UTF-8, and as the file system takes them.
#pragma once

#include <filesystem>
#include <string>

namespace fisheye_calibration::program {

inline std::filesystem::path filePath(const std::string& name) {
#if defined(__MINGW32__)
  // Its library takes narrow names for Latin-1, whatever the code page is, but gives them as UTF-8.
  return std::u8string(name.begin(), name.end());
#else
  return name;
#endif
}

}  // namespace fisheye_calibration::program
