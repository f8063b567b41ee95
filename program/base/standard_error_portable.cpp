#include <unistd.h>

#include "base/standard_error.h"

namespace fisheye_calibration::program {

bool isErrorTerminal() { return ::isatty(STDERR_FILENO) != 0; }

std::FILE* openTemporaryFile() { return std::tmpfile(); }

int redirectStandardError(std::FILE* file) {
  const int saved = ::dup(STDERR_FILENO);
  if (saved >= 0) {
    ::dup2(::fileno(file), STDERR_FILENO);
  }
  return saved;
}

void restoreStandardError(int saved) {
  ::dup2(saved, STDERR_FILENO);
  ::close(saved);
}

}  // namespace fisheye_calibration::program
