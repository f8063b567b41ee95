#include "commands/correct_command.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <new>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/frame_buffer.h"
#include "base/text.h"
#include "checks/checked_camera.h"
#include "commands/declared_options.h"
#include "commands/frame_jobs.h"
#include "commands/option_values.h"
#include "drawing/grid_overlay.h"
#include "files/output_files.h"
#include "files/output_paths.h"
#include "files/picture_file.h"
#include "fisheye_calibration.h"
#include "geometry/metric_picture.h"
#include "reports/progress_bar.h"
#include "sources/picture_folder.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

struct Options {
  fs::path camera;
  std::vector<fs::path> frames;  // pictures, or one folder of them
  fs::path output;               // a picture; a folder for several frames
  std::string size;
  fs::path mask;
  std::string grid;
  bool force = false;
};

struct Renderer {
  CheckedCamera camera;
  std::optional<Size> size;  // empty: the one that the camera's file notes, or the frame's own
  double gridSpacing = 0;    // 0: no grid
};

struct View {
  cv::Mat picture;
  cv::Mat mask;
  Size frame;
};

void checkMask(const Options& options, const std::vector<FrameJob>& jobs) {
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

View render(const Renderer& renderer, const fs::path& path, std::ostream& messages) {
  FrameBuffer frame = toBuffer(readFrame(path, messages));
  const Size size = renderer.size.value_or(renderer.camera.corrected.value_or(frame.size));
  FrameBuffer view = blankBuffer(size, frame.bitCount);
  FrameBuffer mask = blankBuffer(size, 8);
  if (!SingleCamCorrected(frame.data(), frame.size.width, frame.size.height, frame.bitCount,
                          renderer.camera.param, view.data(), size.width, size.height,
                          mask.data())) {
    failJob(nameOf(path) +
            ": the library could not correct the frame; nothing of it but black is left");
  }
  View result = {.picture = toPicture(view), .mask = toPicture(mask), .frame = frame.size};
  if (renderer.gridSpacing > 0) {
    const MetricPicture metric = metricPicture(renderer.camera.param, size);
    drawGrid(result.picture, gridOver(metric, renderer.gridSpacing));
  }
  return result;
}

Renderer preparedRenderer(const Options& options, std::ostream& messages) {
  Renderer renderer;
  if (!options.size.empty()) {
    renderer.size = parseImageSize("--size", options.size);
  }
  if (!options.grid.empty()) {
    renderer.gridSpacing = static_cast<double>(parsePositive("--grid", options.grid));
  }
  renderer.camera = loadCheckedCamera(options.camera, options.force, messages);
  return renderer;
}

// Ends a run over many frames, because the next one would fail for the same reason.
class HopelessRun : public Failure {
 public:
  using Failure::Failure;
};

// Frames of one size and one camera: the mask and the warning of the first hold for all.
class Batch {
 public:
  Batch(const Options& options, const Renderer& renderer, std::ostream& messages)
      : options_(options), renderer_(renderer), messages_(messages) {}

  // Failures name the frame.
  void correct(const FrameJob& job) {
    try {
      correctFrame(job);
    } catch (const std::bad_alloc&) {
      failJob(nameOf(job.frame) + ": not enough memory");
    } catch (const cv::Exception& error) {
      failJob(nameOf(job.frame) + ": the frame cannot be corrected (" + error.err + ")");
    }
  }

 private:
  void correctFrame(const FrameJob& job) {
    const View view = render(renderer_, job.frame, messages_);
    const bool isFirst = first_ == Size();
    if (!isFirst && first_ != view.frame) {
      failBadInput(nameOf(job.frame) + ": its size is not that of the first frame");
    }
    OutputFiles files;
    if (isFirst) {
      checkSizes(view, nameOf(job.frame));
      if (!options_.mask.empty()) {
        stagePicture(files, options_.mask, view.mask);
      }
    }
    stagePicture(files, job.output, view.picture);
    files.commit();
    first_ = view.frame;
  }

  void checkSizes(const View& view, const std::string& frame) const {
    const Size rendered = {.width = view.picture.cols, .height = view.picture.rows};
    try {
      requireFrameSize(renderer_.camera, options_.camera, frame, view.frame, options_.force,
                       messages_);
      requireFittingSize(renderer_.camera, options_.camera, rendered, options_.force, messages_);
    } catch (const Failure& failure) {
      throw HopelessRun(failure.code(), failure.what());
    }
  }

  const Options& options_;
  const Renderer& renderer_;
  std::ostream& messages_;
  Size first_;  // that of the first frame; no size before it
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

int run(const Options& options, const Streams& streams) {
  if (options.frames.empty()) {
    failBadInput("no frame is given");
  }
  const Renderer renderer = preparedRenderer(options, streams.messages);
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
  const auto options = std::make_shared<Options>();
  CLI::App* command =
      addCommand(app, "correct", "Render frames as seen from straight above the bed");
  addPath(*command, "--camera", options->camera, "the camera's parameter file")
      .typeName("INI")
      .required();
  addPaths(*command, "frames", options->frames, "pictures of the camera, or a folder of them")
      .typeName("FRAME")
      .required();
  addPath(*command, "-o,--output", options->output,
          "the corrected picture; a folder for several frames (made if it is missing)")
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
  setFooter(
      *command,
      "Grey frames give grey pictures, colour frames give colour.\n\nExamples:\n"
      "  fisheye-calibration correct --camera camera.ini frame.png -o top.png --grid 50\n"
      "  fisheye-calibration correct --camera camera.ini frames -o corrected --mask mask.png");
  return {command, [options](const Streams& streams) { return run(*options, streams); }};
}

}  // namespace fisheye_calibration::program
