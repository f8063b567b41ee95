#include <io.h>

#include <filesystem>
#include <random>
#include <string>
#include <system_error>

#include "base/file_path.h"
#include "base/standard_error.h"

namespace fisheye_calibration::program {
namespace {

int standardError() { return _fileno(stderr); }

}  // namespace

bool isErrorTerminal() { return _isatty(standardError()) != 0; }

// std::tmpfile() would want to write to the root of the drive.
std::FILE* openTemporaryFile() {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
  if (error) {
    return nullptr;
  }
  std::random_device random;
  const std::string name =
      "fisheye-calibration-" + std::to_string(random()) + std::to_string(random());
  return std::fopen(nameOf(folder / name).c_str(), "w+bTD");  // temporary, deleted when closed
}

int redirectStandardError(std::FILE* file) {
  const int saved = _dup(standardError());
  if (saved >= 0) {
    _dup2(_fileno(file), standardError());
  }
  return saved;
}

void restoreStandardError(int saved) {
  _dup2(saved, standardError());
  _close(saved);
}

}  // namespace fisheye_calibration::program
