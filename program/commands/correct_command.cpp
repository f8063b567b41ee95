#include "commands/correct_command.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <ostream>
#include <set>
#include <system_error>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/frame_buffer.h"
#include "base/text.h"
#include "checks/checked_camera.h"
#include "commands/option_values.h"
#include "drawing/grid_overlay.h"
#include "files/output_files.h"
#include "files/output_places.h"
#include "files/picture_file.h"
#include "fisheye_calibration.h"
#include "geometry/metric_picture.h"
#include "geometry/second_view.h"
#include "reports/progress_bar.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

struct Job {
  std::string frame;
  std::string output;
};

struct Renderer {
  FishEyeCalibrationParam param{};
  std::optional<Size> size;  // nothing: the frame's own
  double gridSpacing = 0;    // 0: no grid
};

struct View {
  cv::Mat picture;
  cv::Mat mask;
  Size frame;
};

std::vector<std::string> picturesIn(const std::string& folder) {
  std::vector<std::string> pictures;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(filePath(folder), error)) {
    if (isPicture(entry.path().string())) {
      pictures.push_back(entry.path().string());
    }
  }
  if (error) {
    failBadInput(folder + ": " + error.message());
  }
  if (pictures.empty()) {
    failBadInput(folder + ": there is no picture in this folder");
  }
  std::sort(pictures.begin(), pictures.end());
  return pictures;
}

void prepareFolder(const std::string& folder) {
  std::error_code error;
  if (fs::is_directory(filePath(folder), error)) {
    return;
  }
  if (fs::exists(filePath(folder), error)) {
    failBadInput("-o: " + folder + " is a file; several frames need a folder");
  }
  fs::create_directory(filePath(folder), error);
  if (error) {
    failBadInput("-o: " + folder + ": " + error.message());
  }
}

std::vector<Job> folderJobs(const std::vector<std::string>& frames, const std::string& folder) {
  std::vector<Job> jobs;
  std::set<std::string> names;
  for (const std::string& frame : frames) {
    const std::string name = filePath(frame).filename().string();
    if (!names.insert(name).second) {
      failBadInput("two frames are called " + name);
    }
    const std::string output = (filePath(folder) / filePath(name)).string();
    requirePictureName(frame, output);
    if (isSameFile(output, frame)) {
      failBadInput("-o: " + output + " is the frame itself");
    }
    jobs.push_back({frame, output});
  }
  prepareFolder(folder);
  return jobs;
}

std::vector<Job> plannedJobs(const CorrectOptions& options) {
  std::error_code error;
  const bool folder =
      options.frames.size() == 1 && fs::is_directory(filePath(options.frames[0]), error);
  if (folder) {
    return folderJobs(picturesIn(options.frames[0]), options.output);
  }
  if (options.frames.size() > 1) {
    return folderJobs(options.frames, options.output);
  }
  requireWritablePlace("-o", options.output);
  requirePictureName("-o", options.output);
  if (isSameFile(options.output, options.frames[0])) {
    failBadInput("-o: " + options.output + " is the frame itself");
  }
  return {{options.frames[0], options.output}};
}

void requireMaskPlace(const CorrectOptions& options, const std::vector<Job>& jobs) {
  if (options.mask.empty()) {
    return;
  }
  requireWritablePlace("--mask", options.mask);
  requirePictureName("--mask", options.mask);
  for (const Job& job : jobs) {
    if (options.mask == job.output || isSameFile(options.mask, job.output) ||
        isSameFile(options.mask, job.frame)) {
      failBadInput("--mask: " + options.mask + " is named twice");
    }
  }
}

View render(const Renderer& renderer, const std::string& path) {
  FrameBuffer frame = toBuffer(readFrame(path));
  const Size size = renderer.size.value_or(frame.size);
  FrameBuffer view = blankBuffer(size, frame.bitCount);
  FrameBuffer mask = blankBuffer(size, 8);
  if (!SingleCamCorrected(frame.data(), frame.size.width, frame.size.height, frame.bitCount,
                          renderer.param, view.data(), size.width, size.height, mask.data())) {
    failJob(path + ": the library could not correct the frame; nothing of it but black is left");
  }
  View result{toPicture(view), toPicture(mask), frame.size};
  if (renderer.gridSpacing > 0) {
    const MetricPicture metric = metricPicture(renderer.param, size);
    drawGrid(result.picture, gridOver(metric, renderer.gridSpacing));
  }
  return result;
}

Renderer preparedRenderer(const CorrectOptions& options, std::ostream& messages) {
  Renderer renderer;
  if (!options.size.empty()) {
    renderer.size = parseSize("--size", options.size, 1, kLargestImageSide);
  }
  if (!options.grid.empty()) {
    renderer.gridSpacing = static_cast<double>(parsePositive("--grid", options.grid));
  }
  renderer.param = loadCheckedCamera(options.camera, messages);
  return renderer;
}

// What the first frame shows of camera and mask holds for all frames of its size.
class Batch {
 public:
  Batch(const CorrectOptions& options, const Renderer& renderer, std::ostream& messages)
      : options_(options), renderer_(renderer), messages_(messages) {}

  void correct(const Job& job) {
    const View view = render(renderer_, job.frame);
    const Size& size = view.frame;
    if (first_ && (first_->width != size.width || first_->height != size.height)) {
      failBadInput(job.frame + ": its size is not that of the first frame");
    }
    OutputFiles files;
    if (!first_) {
      const Size rendered{view.picture.cols, view.picture.rows};
      const std::string complaint = sizeComplaint(renderer_.param, rendered);
      if (!complaint.empty()) {
        messages_ << "warning: " << options_.camera << ": " << complaint << "\n";
      }
      if (!options_.mask.empty()) {
        files.stage(options_.mask, encodePicture(options_.mask, view.mask));
      }
    }
    files.stage(job.output, encodePicture(job.output, view.picture));
    files.commit();
    first_ = size;
  }

 private:
  const CorrectOptions& options_;
  const Renderer& renderer_;
  std::ostream& messages_;
  std::optional<Size> first_;
};

int correctMany(const std::vector<Job>& jobs, Batch& batch, const std::string& folder,
                std::ostream& out, std::ostream& messages) {
  const auto start = std::chrono::steady_clock::now();
  const auto seconds = [&] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  std::size_t failed = 0;
  {
    ProgressBar bar(messages);
    for (std::size_t i = 0; i < jobs.size(); ++i) {
      try {
        batch.correct(jobs[i]);
      } catch (const Failure& failure) {
        bar.clear();
        messages << failure.what() << "\n";
        ++failed;
      }
      bar.show(progressText(i + 1, jobs.size(), seconds()));
    }
  }
  const std::size_t done = jobs.size() - failed;
  out << done << " of " << jobs.size() << " frames corrected in " << general(seconds(), 3) << " s, "
      << general(static_cast<double>(done) / seconds(), 3) << " frames per second, reading and "
      << "writing included; written to " << folder << "\n";
  return failed == 0 ? kExitOk : kExitJobFailed;
}

}  // namespace

int runCorrect(const CorrectOptions& options, std::ostream& out, std::ostream& messages) {
  if (options.frames.empty()) {
    failBadInput("no frame is given");
  }
  const Renderer renderer = preparedRenderer(options, messages);
  const std::vector<Job> jobs = plannedJobs(options);
  requireMaskPlace(options, jobs);
  Batch batch(options, renderer, messages);
  std::error_code error;
  const bool many = jobs.size() > 1 || fs::is_directory(filePath(options.output), error);
  if (many) {
    return correctMany(jobs, batch, options.output, out, messages);
  }
  batch.correct(jobs[0]);
  out << options.frames[0] << ": corrected view written to " << options.output;
  if (!options.mask.empty()) {
    out << ", mask to " << options.mask;
  }
  out << "\n";
  return kExitOk;
}

}  // namespace fisheye_calibration::program
