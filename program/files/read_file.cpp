#include "files/read_file.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <system_error>

#include "base/failure.h"
#include "base/file_path.h"

namespace fisheye_calibration::program {

std::string readFile(const std::filesystem::path& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) {
    failBadInput(nameOf(path) + ": is a folder, not a file");
  }
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    failBadInput(nameOf(path) + ": " + (errno != 0 ? std::strerror(errno) : "cannot be opened"));
  }
  std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (file.bad()) {
    failBadInput(nameOf(path) + ": cannot be read");
  }
  return bytes;
}

}  // namespace fisheye_calibration::program
