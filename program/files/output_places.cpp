#include "files/output_places.h"

#include <filesystem>
#include <system_error>

#include "base/failure.h"
#include "base/file_path.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;

void requireWritablePlace(const std::string& option, const std::string& path) {
  std::error_code error;
  if (path.empty()) {
    failBadInput(option + ": the file name is empty");
  }
  if (fs::is_directory(filePath(path), error)) {
    failBadInput(option + ": " + path + " is a folder");
  }
  const fs::path folder = fs::absolute(filePath(path)).parent_path();
  if (!fs::is_directory(folder, error)) {
    failBadInput(option + ": there is no folder " + folder.string());
  }
}

bool isSameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  return fs::equivalent(filePath(a), filePath(b), error) && !error;
}

}  // namespace fisheye_calibration::program
