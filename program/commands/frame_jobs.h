// The frames of a run, each with the file for its picture.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

namespace fisheye_calibration::program {

struct FrameJob {
  std::filesystem::path frame;
  std::filesystem::path output;
};

// Makes the folder that an option names if it is missing. Fails as bad input if that is impossible.
void prepareFolder(const std::string& option, const std::filesystem::path& folder);

// One picture goes to the file `output`; several pictures, or a folder of them, go to the folder
// `output`, which is made if it is missing. Of a folder, every file is taken that is a picture or
// has the extension of one; a note names the others. Fails as bad input if that is not possible.
std::vector<FrameJob> plannedJobs(const std::vector<std::filesystem::path>& frames,
                                  const std::filesystem::path& output, std::ostream& messages);

}  // namespace fisheye_calibration::program
