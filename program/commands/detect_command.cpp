#include "commands/detect_command.h"

#include <memory>
#include <ostream>
#include <string>

#include "base/failure.h"
#include "base/file_path.h"
#include "checks/input_checks.h"
#include "commands/declared_options.h"
#include "commands/detected_source.h"
#include "commands/target_options.h"
#include "files/output_files.h"
#include "files/output_paths.h"
#include "files/points_csv.h"
#include "sources/frame_source.h"

namespace fisheye_calibration::program {
namespace {

struct DetectOptions {
  std::filesystem::path image;
  TargetOptions target;
  std::filesystem::path output;
  std::string frameLimit;
};

int run(const DetectOptions& options, const Streams& streams) {
  if (sourceKind(nameOf(options.image)) != SourceKind::kPicture) {
    return detectInSource(nameOf(options.image), options.target, options.output, options.frameLimit,
                          streams);
  }
  if (!options.frameLimit.empty()) {
    failBadInput("--frames goes with a folder, a video, a device or a stream");
  }
  requireWritable("-o", options.output);
  if (isSameFile(options.output, options.image)) {
    failBadInput("-o: " + nameOf(options.output) + " is the picture itself");
  }
  if (!options.target.overlay.empty() && isSamePath(options.output, options.target.overlay)) {
    failBadInput("-o and --overlay are the same file");
  }
  OutputFiles files;
  const DetectedTarget found = detectInPicture(options.image, options.target, files, streams);
  for (const Finding& finding : checkInput(found.points, {found.grey.cols, found.grey.rows})) {
    streams.messages << "warning: " << finding.text << "\n";
  }
  files.stage(options.output, formatPoints(found.points));
  files.commit();
  streams.out << nameOf(options.image) << ": " << found.summary << " written to "
              << nameOf(options.output) << "\n";
  return kExitOk;
}

}  // namespace

Command addDetectCommand(CLI::App& app) {
  const auto options = std::make_shared<DetectOptions>();
  CLI::App* command = addCommand(
      app, "detect", "Find the target in a picture and write its numbered points as CSV");
  addPath(*command, "image", options->image,
          "picture of the target; or a folder of pictures, a video, a device or a stream")
      .required();
  addTargetOptions(*command, options->target);
  addPath(*command, "-o,--output", options->output,
          "the points: PointId,Xw,Yw,ImagePtX,ImagePtY; of several frames, a folder for a file of "
          "each frame that shows the target (made if it is missing)")
      .typeName("CSV")
      .required();
  addOption(*command, "--frames", options->frameLimit, "end after these frames of several")
      .typeName("N");
  setFooter(
      *command,
      "Points are numbered row by row; +Xw runs right and +Yw down in the picture.\n\nExample:\n"
      "  fisheye-calibration detect photo.png --chessboard 8x6 --spacing 39 -o points.csv "
      "--overlay found.png\n"
      "  fisheye-calibration detect in.mp4 --chessboard 8x6 --spacing 39 -o points");
  return {command, [options](const Streams& streams) { return run(*options, streams); }};
}

}  // namespace fisheye_calibration::program
