// The text of a profile (INI) file, read and edited as the Windows profile functions do it.
//
// Lines end in CR LF, LF or CR. `[name]` opens a section; a key line is `key=value` and split at
// its first '='; all other lines mean nothing. Names ignore the case of ASCII letters,
// and blanks (space, tab) around names and values do not count. A UTF-8 byte order mark is skipped.
// The first section of a name and in it the first key of a name are the ones that are read and
// rewritten.
#pragma once

#include <string>
#include <string_view>

namespace fisheye_calibration::platform {

// The value, without one matching pair of quotes " or ' around it; empty where there is none. It
// ends at a NUL byte.
std::string_view profileValue(std::string_view text, std::string_view section,
                              std::string_view key);

// Rewrites the key's line or adds one: behind the last line of the section that is not blank, so
// that blank lines go on separating sections. The written line ends in CR LF. All other bytes of
// `text` stay; only a last line without an end gets one when something is added behind it.
void setProfileValue(std::string& text, std::string_view section, std::string_view key,
                     std::string_view value);

}  // namespace fisheye_calibration::platform
