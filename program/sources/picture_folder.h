// The pictures of a folder.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace fisheye_calibration::program {

bool isFolder(const std::filesystem::path& path);

struct PictureFolder {
  std::vector<std::filesystem::path> pictures;  // in the order of their names, 2 before 10
  std::vector<std::string> others;              // names of the other files, in the same order
};

// Of a folder, every file is taken that is a picture or has the extension of one. Fails as bad
// input if it cannot be read or holds no picture.
PictureFolder picturesIn(const std::filesystem::path& folder);

}  // namespace fisheye_calibration::program
