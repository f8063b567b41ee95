#include "commands/frame_jobs.h"

#include <algorithm>
#include <ostream>
#include <set>
#include <system_error>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "files/output_paths.h"
#include "files/picture_file.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

std::vector<fs::path> picturesIn(const fs::path& folder, std::ostream& messages) {
  std::vector<fs::path> pictures;
  std::vector<std::string> others;
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
      pictures.push_back(path);
    } else {
      others.push_back(nameOf(path.filename()));
    }
  }
  if (error) {
    failBadInput(nameOf(folder) + ": " + error.message());
  }
  if (pictures.empty()) {
    failBadInput(nameOf(folder) + ": there is no picture in this folder");
  }
  std::sort(pictures.begin(), pictures.end());
  std::sort(others.begin(), others.end());
  if (!others.empty()) {
    messages << "note: " << nameOf(folder) << ": not pictures: " << joined(others, ", ") << "\n";
  }
  return pictures;
}

void prepareFolder(const fs::path& folder) {
  if (isFolder(folder)) {
    return;
  }
  std::error_code error;
  if (fs::exists(folder, error)) {
    failBadInput("-o: " + nameOf(folder) + " is a file; several frames need a folder");
  }
  fs::create_directory(folder, error);
  if (error) {
    failBadInput("-o: " + nameOf(folder) + ": " + error.message());
  }
}

std::vector<FrameJob> folderJobs(const std::vector<fs::path>& frames, const fs::path& folder) {
  std::vector<FrameJob> jobs;
  std::set<fs::path> names;
  for (const fs::path& frame : frames) {
    const fs::path name = frame.filename();
    if (!names.insert(name).second) {
      failBadInput("two frames are called " + nameOf(name));
    }
    const fs::path output = folder / name;
    requirePictureName(nameOf(frame), output);
    if (isSameFile(output, frame)) {
      failBadInput("-o: " + nameOf(output) + " is the frame itself");
    }
    jobs.push_back({.frame = frame, .output = output});
  }
  prepareFolder(folder);
  return jobs;
}

}  // namespace

bool isFolder(const fs::path& path) {
  std::error_code error;
  return fs::is_directory(path, error);
}

std::vector<FrameJob> plannedJobs(const std::vector<fs::path>& frames, const fs::path& output,
                                  std::ostream& messages) {
  if (frames.size() > 1) {
    return folderJobs(frames, output);
  }
  const fs::path& frame = frames[0];
  if (isFolder(frame)) {
    return folderJobs(picturesIn(frame, messages), output);
  }
  requireWritable("-o", output);
  requirePictureName("-o", output);
  if (isSameFile(output, frame)) {
    failBadInput("-o: " + nameOf(output) + " is the frame itself");
  }
  return {{.frame = frame, .output = output}};
}

}  // namespace fisheye_calibration::program
