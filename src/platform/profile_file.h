// Profile (INI) files: sections of key=value lines, as the Windows profile functions keep them.
// Windows' own functions do the work there; elsewhere a replacement with the same observable
// behaviour. Numbers, locales and code pages play no part here: values are bytes.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace fisheye_calibration::platform {

// Keys hold no line break, '=' or NUL and do not begin with '[' or ';', which begins a comment;
// values and section names no line break or NUL, section names no ']' either.
struct ProfileEntry {
  const char* key;
  std::string value;
};

// Texts of `keys` in `section`, in their order: blanks around the value and one pair of quotes are
// taken off, at most 127 characters are returned. A missing file, section or key and a null path
// give empty text.
std::vector<std::string> readProfileValues(const char* path, const char* section,
                                           std::span<const char* const> keys);

// Writes the entries one after the other. A key that exists is rewritten in its place, a new one
// goes to the end of its section, a missing section to the end of the file; a missing file is
// created. Every other line stays. False when the file cannot be written: read-only, a folder, in a
// folder that does not exist, a null path; then nothing changes and nothing is created.
//
// Off Windows all entries are written or none: the folder must be writable, the file is replaced by
// rename, and whatever interrupts that leaves the old file or the new one. Of two writers at once
// the last one's file stays.
bool writeProfileValues(const char* path, const char* section,
                        std::span<const ProfileEntry> entries);

}  // namespace fisheye_calibration::platform
