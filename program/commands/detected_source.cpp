#include "commands/detected_source.h"

#include <memory>
#include <opencv2/imgproc.hpp>
#include <ostream>
#include <set>

#include "base/file_path.h"
#include "base/text.h"
#include "checks/input_checks.h"
#include "commands/corrected_view.h"
#include "commands/frame_jobs.h"
#include "commands/frame_sink.h"
#include "commands/source_run.h"
#include "files/output_files.h"
#include "files/output_paths.h"
#include "files/picture_file.h"
#include "files/points_csv.h"
#include "sources/frame_source.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

cv::Mat greyOf(const cv::Mat& picture) {
  if (picture.channels() == 1) {
    return picture;
  }
  cv::Mat grey;
  cv::cvtColor(picture, grey, cv::COLOR_BGR2GRAY);
  return grey;
}

// The names of the files of a run, each without extension.
class FileNames {
 public:
  explicit FileNames(SourceKind kind) : isFolder_(kind == SourceKind::kFolder) {}

  std::string nameFor(const SourceFrame& frame, int number) {
    if (!isFolder_) {
      return frameFileName(number);
    }
    const fs::path picture = pathOf(frame.name).filename();
    const std::string whole = nameOf(picture);
    std::string name = nameOf(picture.stem());
    for (int copy = 1; !used_.insert(lowerCase(name)).second; ++copy) {  // a.png and a.jpg
      name = copy == 1 ? whole : whole + "-" + std::to_string(copy);
    }
    return name;
  }

 private:
  bool isFolder_;
  std::set<std::string> used_;  // in small letters: some systems do not distinguish them
};

void checkFolders(const std::string& source, const fs::path& output, const fs::path& overlay) {
  if (!overlay.empty() && isSamePath(overlay, output)) {
    failBadInput("-o and --overlay are the same folder");
  }
  for (const auto& [option, folder] : {std::pair("-o", output), {"--overlay", overlay}}) {
    if (!folder.empty() && isSamePath(folder, pathOf(source))) {
      failBadInput(std::string(option) + ": " + nameOf(folder) + " is the source itself");
    }
  }
  prepareFolder("-o", output);
  if (!overlay.empty()) {
    prepareFolder("--overlay", overlay);
  }
}

}  // namespace

int detectInSource(const std::string& text, const TargetOptions& target, const fs::path& output,
                   const std::string& frameLimit, const Streams& streams) {
  const int limit = parseFrameLimit(frameLimit);
  const Target wanted = parseTarget(target);
  parseWorld(target, wanted.columns * wanted.rows);
  const std::unique_ptr<FrameSource> source = openSource(text);
  checkFolders(text, output, target.overlay);
  FileNames names(source->kind());
  std::ostream nowhere(nullptr);  // the progress bar stands for the steps of each frame
  const auto detect = [&](const SourceFrame& frame, int number) {
    std::string remark;
    onFrame(frame.name, [&] {
      try {
        const std::string name = names.nameFor(frame, number);
        const DetectedTarget found = detectIn(greyOf(frame.picture), frame.name, target, nowhere);
        for (const Finding& finding :
             checkInput(found.points, {.width = found.grey.cols, .height = found.grey.rows})) {
          streams.messages << "warning: " << frame.name << ": " << finding.text << "\n";
        }
        OutputFiles files;
        files.stage(output / pathOf(name + ".csv"), formatPoints(found.points));
        if (!target.overlay.empty()) {
          stagePicture(files, target.overlay / pathOf(name + ".png"), overlayOf(found, target));
        }
        files.commit();
      } catch (const NoTarget& missing) {
        remark = missing.what();
      }
    });
    return remark;
  };
  const Interruption interruption;
  const SourceTally tally = runOver(*source, limit, interruption, streams, detect);
  const std::string name = sourceName(text);
  streams.out << name << ": the target was found in " << shareDone(tally, *source, limit) << " in "
              << general(tally.seconds, 3) << " s; points written to " << nameOf(output) << "\n";
  return exitCodeOf(tally, name, streams.messages);
}

}  // namespace fisheye_calibration::program
