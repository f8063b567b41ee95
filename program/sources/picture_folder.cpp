#include "sources/picture_folder.h"

#include <algorithm>
#include <system_error>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/natural_order.h"
#include "files/picture_file.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;

bool isFolder(const fs::path& path) {
  std::error_code error;
  return fs::is_directory(path, error);
}

PictureFolder picturesIn(const fs::path& folder) {
  PictureFolder found;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    const fs::path& path = entry.path();
    std::error_code ignored;
    // A link to nothing is reported when its turn comes.
    const bool dangling = entry.is_symlink(ignored) && !entry.exists(ignored);
    if (!entry.is_regular_file(ignored) && !dangling) {
      continue;
    }
    if (hasPictureName(path) || isPicture(path)) {
      found.pictures.push_back(path);
    } else {
      found.others.push_back(nameOf(path.filename()));
    }
  }
  if (error) {
    failBadInput(nameOf(folder) + ": " + error.message());
  }
  if (found.pictures.empty()) {
    failBadInput(nameOf(folder) + ": there is no picture in this folder");
  }
  std::sort(found.pictures.begin(), found.pictures.end(), [](const fs::path& a, const fs::path& b) {
    return naturallyBefore(nameOf(a.filename()), nameOf(b.filename()));
  });
  std::sort(found.others.begin(), found.others.end(), naturallyBefore);
  return found;
}

}  // namespace fisheye_calibration::program
