// Files are paths within the program. On the command line, in messages and for functions that take
// narrow names they are texts in UTF-8.
#pragma once

#include <filesystem>
#include <string>

namespace fisheye_calibration::program {

inline std::filesystem::path pathOf(const std::string& name) {
#if defined(__MINGW32__)
  // Its library takes narrow names for Latin-1, whatever the code page is, but gives them as UTF-8.
  return std::u8string(name.begin(), name.end());
#else
  return name;
#endif
}

inline std::string nameOf(const std::filesystem::path& path) { return path.string(); }

// For the library's parameter files: profile functions look for bare names in the system's own
// folder.
inline std::string absoluteNameOf(const std::filesystem::path& path) {
  return nameOf(std::filesystem::absolute(path));
}

}  // namespace fisheye_calibration::program
