// Files that appear whole or not at all: everything is first written beside its destination, then
// renamed over it. A file that was there stays as it was until then.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace fisheye_calibration::program {

std::string readFile(const std::string& path);

// Fails as bad input if the path cannot be a file to write: its folder is missing, or it is a
// folder.
void requireWritablePlace(const std::string& option, const std::string& path);

// True if both name the same existing file.
bool isSameFile(const std::string& a, const std::string& b);

class OutputFiles {
 public:
  OutputFiles() = default;
  OutputFiles(const OutputFiles&) = delete;
  OutputFiles& operator=(const OutputFiles&) = delete;
  ~OutputFiles();  // removes what was staged and not committed

  void stage(const std::string& path, std::string_view bytes);

  // Stages a copy of the file at `path` (none, if there is no such file) and gives the copy's path,
  // for whoever edits it in place.
  std::filesystem::path stageCopy(const std::string& path);

  void commit();

 private:
  struct Staged {
    std::filesystem::path temporary;
    std::filesystem::path destination;
  };
  std::vector<Staged> staged_;
};

}  // namespace fisheye_calibration::program
