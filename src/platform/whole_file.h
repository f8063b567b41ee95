// Reading and replacing a file as a whole, on POSIX systems.
#pragma once

#include <string>
#include <string_view>

namespace fisheye_calibration::platform {

enum class FileState {
  kRead,
  kMissing,     // no such file, or a dangling link
  kUnreadable,  // not a regular file, no permission, too large for a parameter file
};

FileState readWholeFile(const char* path, std::string& content);

// Replaces the content of the file at `path`, or creates it. The content is written to a temporary
// file in the same folder, which is flushed to disk and then renamed, so at any moment either the
// old or the new file exists as a whole. Links are followed and kept. Permissions are preserved,
// and so is the owner where the process may set it. Returns false, with nothing changed and no
// temporary file left, if the file is read-only (without any write permission it is, even for
// root), is not a regular file, or any step fails.
bool replaceWholeFile(const char* path, std::string_view content);

}  // namespace fisheye_calibration::platform
