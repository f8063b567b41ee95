// The process's standard error: whether somebody watches it, and its redirection into a file.
#pragma once

#include <cstdio>

namespace fisheye_calibration::program {

// True if standard error goes to a terminal.
bool isErrorTerminal();

// A new temporary file, open for writing and reading, that disappears once it is closed. Null if
// there is no room for one.
std::FILE* openTemporaryFile();

// Sends standard error to `file`. Returns what restoreStandardError() needs, negative if that is
// impossible.
int redirectStandardError(std::FILE* file);
void restoreStandardError(int saved);

}  // namespace fisheye_calibration::program
