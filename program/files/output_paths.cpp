#include "files/output_paths.h"

#include <system_error>

#include "base/failure.h"
#include "base/file_path.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;

void requireWritable(const std::string& option, const fs::path& path) {
  std::error_code error;
  if (path.empty()) {
    failBadInput(option + ": the file name is empty");
  }
  if (fs::is_directory(path, error)) {
    failBadInput(option + ": " + nameOf(path) + " is a folder");
  }
  const fs::path folder = fs::absolute(path).parent_path();
  if (!fs::is_directory(folder, error)) {
    failBadInput(option + ": there is no folder " + nameOf(folder));
  }
}

bool isSameFile(const fs::path& a, const fs::path& b) {
  std::error_code error;
  return fs::equivalent(a, b, error) && !error;
}

bool isSamePath(const fs::path& a, const fs::path& b) {
  // Neither needs to be there yet.
  std::error_code failedA;
  std::error_code failedB;
  const fs::path wholeA = fs::weakly_canonical(fs::absolute(a), failedA);
  const fs::path wholeB = fs::weakly_canonical(fs::absolute(b), failedB);
  const bool same = failedA || failedB ? a.native() == b.native() : wholeA == wholeB;
  return same || isSameFile(a, b);
}

}  // namespace fisheye_calibration::program
