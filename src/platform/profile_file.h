// Profile (INI) files: sections of key=value lines, as the Windows profile functions define them.
// Windows uses these functions, other systems a replacement with the same observable behaviour.
// Values are bytes: numbers, locales and code pages do not matter here.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace fisheye_calibration::platform {

// Keys contain no line break, '=' or NUL and do not begin with '[' or ';' (a comment). Values and
// section names contain no line break or NUL, and section names no ']'.
struct ProfileEntry {
  const char* key;
  std::string value;
};

// Only Windows tells the two apart. There the system's encoding is the process's code page, while
// UTF-8 reaches every file.
enum class PathEncoding { kSystem, kUtf8 };

struct ProfilePath {
  // NOLINTNEXTLINE(google-explicit-constructor): most paths are in the system's encoding
  ProfilePath(const char* path, PathEncoding pathEncoding = PathEncoding::kSystem)
      : text(path), encoding(pathEncoding) {}

  const char* text;
  PathEncoding encoding;
};

// Returns the values of `keys` in `section`, in this order, without surrounding blanks and one pair
// of quotes, cut to 127 characters (compatibility 11). If the path is null or no text in its
// encoding, or the file, section or key is missing, the value is empty.
std::vector<std::string> readProfileValues(const ProfilePath& path, const char* section,
                                           std::span<const char* const> keys);

// Writes the entries in order. An existing key is rewritten in place, a new one is added at the end
// of its section, a missing section at the end of the file; a missing file is created. All other
// lines stay. Returns false, with nothing changed or created, if the file cannot be written: it is
// read-only or a folder, its folder does not exist, or the path is null or no
// text in its encoding.
//
// On systems other than Windows either all entries are written or none: the file is replaced by
// rename, so its folder must be writable, and an interruption leaves either the old file or the new
// one. If two processes write at the same time, the last one wins.
bool writeProfileValues(const ProfilePath& path, const char* section,
                        std::span<const ProfileEntry> entries);

}  // namespace fisheye_calibration::platform
