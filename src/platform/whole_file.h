// Reading and replacing a file as a whole, on POSIX systems.
#pragma once

#include <string>
#include <string_view>

namespace fisheye_calibration::platform {

enum class FileState {
  Read,
  Missing,     // nothing there, or a link that leads to nothing
  Unreadable,  // not a regular file, no permission, too large for a parameter file
};

FileState readWholeFile(const char* path, std::string& content);

// Gives the file at `path` new content, or creates it. The content goes to a temporary file in the
// same folder, which is flushed to the disk and then renamed, so that at any moment the old or the
// new file is there as a whole. Links are followed and kept; permissions stay, the owner where the
// process may set it. False, with nothing changed and no temporary file left, when the file is
// read-only (a file without any write permission is so even for root), is no regular file, or any
// step fails.
bool replaceWholeFile(const char* path, std::string_view content);

}  // namespace fisheye_calibration::platform
