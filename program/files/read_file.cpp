#include "files/read_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <istream>
#include <system_error>

#include "base/failure.h"
#include "base/file_path.h"

namespace fisheye_calibration::program {

std::string readStream(std::istream& stream, const std::string& name, std::size_t longest) {
  constexpr std::size_t kPart = std::size_t{1} << 16;
  std::string bytes;
  while (stream) {
    const std::size_t before = bytes.size();
    bytes.resize(before + kPart);
    stream.read(bytes.data() + before, static_cast<std::streamsize>(kPart));
    bytes.resize(before + static_cast<std::size_t>(stream.gcount()));
    if (bytes.size() > longest) {
      failBadInput(name + ": longer than " + std::to_string(longest >> 20U) +
                   " MB, which is not read any further");
    }
  }
  if (stream.bad()) {
    failBadInput(name + ": cannot be read");
  }
  return bytes;
}

std::string readFile(const std::filesystem::path& path, std::size_t longest) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) {
    failBadInput(nameOf(path) + ": is a folder, not a file");
  }
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    failBadInput(nameOf(path) + ": " + (errno != 0 ? std::strerror(errno) : "cannot be opened"));
  }
  const bool regular = std::filesystem::is_regular_file(path, error);
  return readStream(file, nameOf(path), regular ? longest : std::min(longest, kLongestText));
}

}  // namespace fisheye_calibration::program
