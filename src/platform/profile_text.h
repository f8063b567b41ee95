// Reads and edits the text of a profile (INI) file as the Windows profile functions do.
//
// Lines end in CR LF, LF or CR. `[name]` opens a section; a key line is `key=value`, split at its
// first '='; all other lines are ignored. Names are compared without regard to the case of ASCII
// letters; blanks (space, tab) around names and values are ignored, and so is a UTF-8 byte order
// mark. Of several sections or keys of the same name the first one is read and rewritten.
#pragma once

#include <string>
#include <string_view>

namespace fisheye_calibration::platform {

// Returns the value without one matching pair of quotes, " or ', around it; empty if there is no
// such key. A NUL byte ends the value.
std::string_view profileValue(std::string_view text, std::string_view section,
                              std::string_view key);

// Rewrites the key's line or adds one after the last line of the section that is not blank, so that
// blank lines still separate sections. The written line ends in CR LF. All other bytes of `text`
// stay, except that a last line without a line end gets one if something is added after it.
void setProfileValue(std::string& text, std::string_view section, std::string_view key,
                     std::string_view value);

}  // namespace fisheye_calibration::platform
