#include "commands/correct_command.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "checks/checked_camera.h"
#include "commands/corrected_source.h"
#include "commands/corrected_view.h"
#include "commands/declared_options.h"
#include "commands/frame_jobs.h"
#include "commands/option_values.h"
#include "files/output_files.h"
#include "files/output_paths.h"
#include "files/picture_file.h"
#include "reports/progress_bar.h"
#include "sources/picture_folder.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

struct CorrectOptions {
  fs::path camera;
  std::vector<fs::path> frames;  // pictures, one folder of them, or a moving source
  fs::path output;               // a picture or a video; a folder for several frames
  std::string size;
  fs::path mask;
  std::string grid;
  std::string frameLimit;
  std::string rate;
  bool force = false;
};

void checkMask(const CorrectOptions& options, const std::vector<FrameJob>& jobs) {
  if (options.mask.empty()) {
    return;
  }
  requireWritable("--mask", options.mask);
  requirePictureName("--mask", options.mask);
  for (const FrameJob& job : jobs) {
    if (isSamePath(options.mask, job.output) || isSameFile(options.mask, job.frame)) {
      failBadInput("--mask: " + nameOf(options.mask) + " is named twice");
    }
  }
}

Renderer preparedRenderer(const CorrectOptions& options, std::ostream& messages) {
  Renderer renderer;
  if (!options.size.empty()) {
    renderer.size = parseImageSize("--size", options.size);
  }
  if (!options.grid.empty()) {
    renderer.gridSpacing = static_cast<double>(parsePositive("--grid", options.grid));
  }
  renderer.cameraFile = options.camera;
  renderer.force = options.force;
  renderer.camera = loadCheckedCamera(options.camera, options.force, messages);
  return renderer;
}

// Frames that are pictures, each with the file for its view.
class Batch {
 public:
  Batch(const CorrectOptions& options, const Renderer& renderer, std::ostream& messages)
      : options_(options), corrector_(renderer, messages), messages_(messages) {}

  // Failures name the frame.
  void correct(const FrameJob& job) {
    const std::string name = nameOf(job.frame);
    onFrame(name, [&] {
      const View view = corrector_.correct(readFrame(job.frame, messages_), name);
      OutputFiles files;
      if (corrector_.isFirst() && !options_.mask.empty()) {
        stagePicture(files, options_.mask, view.mask);
      }
      stagePicture(files, job.output, view.picture);
      files.commit();
      corrector_.accept(view);
    });
  }

 private:
  const CorrectOptions& options_;
  FrameCorrector corrector_;
  std::ostream& messages_;
};

int correctMany(const std::vector<FrameJob>& jobs, Batch& batch, const fs::path& folder,
                const Streams& streams) {
  const auto start = std::chrono::steady_clock::now();
  const auto seconds = [&] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  std::size_t failed = 0;
  {
    ProgressBar bar(streams.messages, streams.progressBar);
    for (std::size_t i = 0; i < jobs.size(); ++i) {
      try {
        batch.correct(jobs[i]);
      } catch (const HopelessRun&) {
        throw;
      } catch (const Failure& failure) {
        bar.clear();
        streams.messages << failure.what() << "\n";
        ++failed;
      }
      bar.show(progressText(i + 1, jobs.size(), seconds()));
    }
  }
  const std::size_t done = jobs.size() - failed;
  streams.out << done << " of " << jobs.size() << " frames corrected in " << general(seconds(), 3)
              << " s, " << general(static_cast<double>(done) / seconds(), 3)
              << " frames per second, reading and writing included; written to " << nameOf(folder)
              << "\n";
  return failed == 0 ? kExitOk : kExitJobFailed;
}

int run(const CorrectOptions& options, const Streams& streams) {
  if (options.frames.empty()) {
    failBadInput("no frame is given");
  }
  const Renderer renderer = preparedRenderer(options, streams.messages);
  if (isMovingSource(options.frames, options.output)) {
    return correctSource({.source = nameOf(options.frames[0]),
                          .output = options.output,
                          .mask = options.mask,
                          .frames = options.frameLimit,
                          .rate = options.rate},
                         renderer, streams);
  }
  if (!options.frameLimit.empty() || !options.rate.empty()) {
    failBadInput("--frames and --fps go with a video, a device or a stream, or with a video as -o");
  }
  const std::vector<FrameJob> jobs = plannedJobs(options.frames, options.output, streams.messages);
  checkMask(options, jobs);
  Batch batch(options, renderer, streams.messages);
  if (jobs.size() > 1 || isFolder(options.output)) {
    return correctMany(jobs, batch, options.output, streams);
  }
  batch.correct(jobs[0]);
  streams.out << nameOf(options.frames[0]) << ": corrected view written to "
              << nameOf(options.output);
  if (!options.mask.empty()) {
    streams.out << ", mask to " << nameOf(options.mask);
  }
  streams.out << "\n";
  return kExitOk;
}

}  // namespace

Command addCorrectCommand(CLI::App& app) {
  const auto options = std::make_shared<CorrectOptions>();
  CLI::App* command =
      addCommand(app, "correct", "Render frames as seen from straight above the bed");
  addPath(*command, "--camera", options->camera, "the camera's parameter file")
      .typeName("INI")
      .required();
  addPaths(*command, "sources", options->frames,
           "pictures of the camera, a folder of them, a video, a device or a stream")
      .typeName("FRAME")
      .required();
  addPath(*command, "-o,--output", options->output,
          "the corrected picture or video; a folder for several frames (made if it is missing)")
      .typeName("PATH")
      .required();
  addOption(*command, "--size", options->size,
            "size of the corrected picture (default: the one that the camera's file notes, "
            "otherwise the frame's size)")
      .typeName("WxH");
  addPath(*command, "--mask", options->mask,
          "write where the picture has content (0) and where not (255); it is the same for all "
          "frames")
      .typeName("PICTURE");
  addForce(*command, options->force);
  addOption(*command, "--grid", options->grid, "draw the bed's lines at multiples of this distance")
      .typeName("MM");
  addOption(*command, "--frames", options->frameLimit, "end a video, device or stream after these")
      .typeName("N");
  addOption(*command, "--fps", options->rate,
            "frames per second of the video to write (default: those of the source, otherwise 25)")
      .typeName("RATE");
  setFooter(
      *command,
      "Grey frames give grey pictures, colour frames give colour. A device is /dev/video0 or a "
      "number, a stream an address with ://; both run until Ctrl+C.\n\nExamples:\n"
      "  fisheye-calibration correct --camera camera.ini frame.png -o top.png --grid 50\n"
      "  fisheye-calibration correct --camera camera.ini frames -o corrected --mask mask.png\n"
      "  fisheye-calibration correct --camera camera.ini in.mp4 -o out.mp4\n"
      "  fisheye-calibration correct --camera camera.ini /dev/video0 -o out.mp4 --frames 250");
  return {command, [options](const Streams& streams) { return run(*options, streams); }};
}

}  // namespace fisheye_calibration::program
