// Files that are written as a whole or not at all: everything is first written next to its
// destination, then renamed over it. Until then an existing file stays as it is.
#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

namespace fisheye_calibration::program {

class OutputFiles {
 public:
  OutputFiles() = default;
  OutputFiles(const OutputFiles&) = delete;
  OutputFiles& operator=(const OutputFiles&) = delete;
  ~OutputFiles();  // removes what was staged and not committed

  void stage(const std::filesystem::path& path, std::string_view bytes);

  // Stages a copy of the file at `path` (none if there is no such file) and returns the copy's
  // path, to be edited in place.
  std::filesystem::path stageCopy(const std::filesystem::path& path);

  // Stages a file that others write: returns its temporary path, which has the destination's
  // extension. Nothing is there yet.
  std::filesystem::path stageNew(const std::filesystem::path& path);

  void commit();

 private:
  struct Staged {
    std::filesystem::path temporary;
    std::filesystem::path destination;
  };
  std::vector<Staged> staged_;
};

}  // namespace fisheye_calibration::program
