#include <windows.h>

#include "platform/profile_file.h"

namespace fisheye_calibration::platform {

std::vector<std::string> readProfileValues(const char* path, const char* section,
                                           std::span<const char* const> keys) {
  std::vector<std::string> values(keys.size());
  if (path == nullptr) {
    return values;  // the system takes a null path as win.ini
  }
  for (std::size_t i = 0; i < keys.size(); ++i) {
    char buffer[128];
    const DWORD length =
        GetPrivateProfileStringA(section, keys[i], "", buffer, sizeof(buffer), path);
    values[i].assign(buffer, length);
  }
  return values;
}

bool writeProfileValues(const char* path, const char* section,
                        std::span<const ProfileEntry> entries) {
  if (path == nullptr) {
    return false;
  }
  bool written = true;
  for (const ProfileEntry& entry : entries) {
    const BOOL done = WritePrivateProfileStringA(section, entry.key, entry.value.c_str(), path);
    written = written && done != FALSE;
  }
  return written;
}

}  // namespace fisheye_calibration::platform
