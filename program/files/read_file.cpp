#include "files/read_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "base/failure.h"
#include "base/file_path.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;

std::string readFile(const std::string& path) {
  std::error_code error;
  if (fs::is_directory(filePath(path), error)) {
    failBadInput(path + ": is a folder, not a file");
  }
  errno = 0;
  std::ifstream file(filePath(path), std::ios::binary);
  if (!file) {
    failBadInput(path + ": " + (errno != 0 ? std::strerror(errno) : "cannot be opened"));
  }
  std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (file.bad()) {
    failBadInput(path + ": cannot be read");
  }
  return bytes;
}

}  // namespace fisheye_calibration::program
