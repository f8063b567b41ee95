#include "platform/profile_file.h"
#include "platform/profile_text.h"
#include "platform/whole_file.h"

namespace fisheye_calibration::platform {

std::vector<std::string> readProfileValues(const ProfilePath& path, const char* section,
                                           std::span<const char* const> keys) {
  constexpr std::size_t kLongestValue = 127;  // a buffer of 128 characters on Windows
  std::vector<std::string> values(keys.size());
  // Reads the file once for all keys, so a concurrent save cannot mix old and new values.
  std::string text;
  if (path.text == nullptr || readWholeFile(path.text, text) != FileState::kRead) {
    return values;
  }
  for (std::size_t i = 0; i < keys.size(); ++i) {
    values[i] = profileValue(text, section, keys[i]).substr(0, kLongestValue);
  }
  return values;
}

bool writeProfileValues(const ProfilePath& path, const char* section,
                        std::span<const ProfileEntry> entries) {
  std::string text;
  if (path.text == nullptr || readWholeFile(path.text, text) == FileState::kUnreadable) {
    return false;
  }
  for (const ProfileEntry& entry : entries) {
    setProfileValue(text, section, entry.key, entry.value);
  }
  return entries.empty() || replaceWholeFile(path.text, text);
}

}  // namespace fisheye_calibration::platform
