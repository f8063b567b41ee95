#include "base/terminal.h"

#include <cstdio>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace fisheye_calibration::program {

bool isErrorTerminal() {
#if defined(_WIN32)
  return _isatty(_fileno(stderr)) != 0;
#else
  return ::isatty(::fileno(stderr)) != 0;
#endif
}

}  // namespace fisheye_calibration::program
