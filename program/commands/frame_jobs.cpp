#include "commands/frame_jobs.h"

#include <ostream>
#include <set>
#include <system_error>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "files/output_paths.h"
#include "files/picture_file.h"
#include "sources/picture_folder.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

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
  prepareFolder("-o", folder);
  return jobs;
}

}  // namespace

void prepareFolder(const std::string& option, const fs::path& folder) {
  if (isFolder(folder)) {
    return;
  }
  std::error_code error;
  if (fs::exists(folder, error)) {
    failBadInput(option + ": " + nameOf(folder) + " is a file; several frames need a folder");
  }
  fs::create_directory(folder, error);
  if (error) {
    failBadInput(option + ": " + nameOf(folder) + ": " + error.message());
  }
}

std::vector<FrameJob> plannedJobs(const std::vector<fs::path>& frames, const fs::path& output,
                                  std::ostream& messages) {
  if (frames.size() > 1) {
    return folderJobs(frames, output);
  }
  const fs::path& frame = frames[0];
  if (isFolder(frame)) {
    const PictureFolder folder = picturesIn(frame);
    if (!folder.others.empty()) {
      messages << "note: " << nameOf(frame) << ": not pictures: " << joined(folder.others, ", ")
               << "\n";
    }
    return folderJobs(folder.pictures, output);
  }
  requireWritable("-o", output);
  requirePictureName("-o", output);
  if (isSameFile(output, frame)) {
    failBadInput("-o: " + nameOf(output) + " is the frame itself");
  }
  return {{.frame = frame, .output = output}};
}

}  // namespace fisheye_calibration::program
