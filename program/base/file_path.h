// Within the program a file is a path; on the command line, in messages and for functions that take
// narrow names it is a text in UTF-8.
#pragma once

#include <filesystem>
#include <string>

namespace fisheye_calibration::program {

inline std::filesystem::path pathOf(const std::string& name) {
#if defined(__MINGW32__)
  // Its library reads narrow names as Latin-1, whatever the code page, but returns them as UTF-8.
  return std::u8string(name.begin(), name.end());
#else
  return name;
#endif
}

inline std::string nameOf(const std::filesystem::path& path) { return path.string(); }

// For the library's parameter files: Windows looks for bare names in its own folder.
inline std::string absoluteNameOf(const std::filesystem::path& path) {
  return nameOf(std::filesystem::absolute(path));
}

}  // namespace fisheye_calibration::program
