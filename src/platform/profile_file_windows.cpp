#include <windows.h>

#include <iterator>
#include <string_view>

#include "platform/profile_file.h"

namespace fisheye_calibration::platform {
namespace {

// Empty if the text is empty or not in the code page.
std::wstring widened(std::string_view text, UINT codePage) {
  const auto length = static_cast<int>(text.size());
  const DWORD invalid = codePage == CP_UTF8 ? MB_ERR_INVALID_CHARS : 0;
  std::wstring wide(static_cast<std::size_t>(
                        MultiByteToWideChar(codePage, invalid, text.data(), length, nullptr, 0)),
                    L'\0');
  MultiByteToWideChar(codePage, invalid, text.data(), length, wide.data(),
                      static_cast<int>(wide.size()));
  return wide;
}

std::wstring widened(const char* text) { return widened(text, CP_ACP); }

std::string narrowed(std::wstring_view text) {
  const auto length = static_cast<int>(text.size());
  std::string narrow(static_cast<std::size_t>(WideCharToMultiByte(CP_ACP, 0, text.data(), length,
                                                                  nullptr, 0, nullptr, nullptr)),
                     '\0');
  WideCharToMultiByte(CP_ACP, 0, text.data(), length, narrow.data(),
                      static_cast<int>(narrow.size()), nullptr, nullptr);
  return narrow;
}

// The system's functions for paths in its code page and in UTF-16. Both write the same bytes.
std::string readValue(const char* path, const char* section, const char* key) {
  char buffer[128];
  const DWORD length = GetPrivateProfileStringA(section, key, "", buffer, sizeof(buffer), path);
  return {buffer, length};
}

std::string readValue(const wchar_t* path, const char* section, const char* key) {
  wchar_t buffer[128];
  const DWORD length =
      GetPrivateProfileStringW(widened(section).c_str(), widened(key).c_str(), L"", buffer,
                               static_cast<DWORD>(std::size(buffer)), path);
  return narrowed({buffer, length});
}

bool writeValue(const char* path, const char* section, const ProfileEntry& entry) {
  return WritePrivateProfileStringA(section, entry.key, entry.value.c_str(), path) != FALSE;
}

bool writeValue(const wchar_t* path, const char* section, const ProfileEntry& entry) {
  return WritePrivateProfileStringW(widened(section).c_str(), widened(entry.key).c_str(),
                                    widened(entry.value.c_str()).c_str(), path) != FALSE;
}

// Calls use(path) with the path as the system takes it, unless it is null or not text: the system
// takes a null path as win.ini.
template <class Use>
bool withPath(const ProfilePath& path, const Use& use) {
  if (path.text == nullptr) {
    return false;
  }
  if (path.encoding == PathEncoding::kSystem) {
    return use(path.text);
  }
  const std::wstring wide = widened(path.text, CP_UTF8);
  return !wide.empty() && use(wide.c_str());
}

}  // namespace

std::vector<std::string> readProfileValues(const ProfilePath& path, const char* section,
                                           std::span<const char* const> keys) {
  std::vector<std::string> values(keys.size());
  withPath(path, [&](const auto* file) {
    for (std::size_t i = 0; i < keys.size(); ++i) {
      values[i] = readValue(file, section, keys[i]);
    }
    return true;
  });
  return values;
}

bool writeProfileValues(const ProfilePath& path, const char* section,
                        std::span<const ProfileEntry> entries) {
  return withPath(path, [&](const auto* file) {
    bool written = true;
    for (const ProfileEntry& entry : entries) {
      written = writeValue(file, section, entry) && written;
    }
    return written;
  });
}

}  // namespace fisheye_calibration::platform
