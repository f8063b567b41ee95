// simulate: one frame of a camera whose parameter file is given.
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "checks/checked_camera.h"
#include "commands/drawn_items.h"
#include "commands/option_values.h"
#include "commands/simulate_options.h"
#include "files/output_files.h"
#include "files/output_paths.h"
#include "files/picture_file.h"
#include "files/points_csv.h"
#include "simulation/frame_effects.h"
#include "simulation/raw_frame.h"

namespace fisheye_calibration::program {
namespace {

constexpr int kBackground = 40;  // grey level beside the bed

double valueOf(const std::string& option, const std::string& text, double least, double most) {
  if (text.empty()) {
    return 0;
  }
  const std::optional<double> value = parseNumber(text);
  if (!value || !(*value >= least && *value <= most)) {
    failBadInput(option + ": give a number from " + general(least, 6) + " to " + general(most, 6) +
                 ", not " + inQuotes(text));
  }
  return *value;
}

FrameEffects effectsOf(const SimulateOptions& options) {
  constexpr double kMost = 100;
  return {.vignetting = valueOf("--vignetting", options.vignetting, 0, 1),
          .gradient = valueOf("--gradient", options.gradient, 0, 1),
          .blur = valueOf("--blur", options.blur, 0, kMost),
          .noise = valueOf("--noise", options.noise, 0, kMost)};
}

void checkOutputs(const SimulateOptions& options) {
  requireWritable("-o", options.output);
  requirePictureName("-o", options.output);
  for (const auto& [option, output] :
       {std::pair("-o", options.output), {"--truth", options.truth}}) {
    for (const std::filesystem::path& input : {options.bedPicture, options.camera}) {
      if (!output.empty() && !input.empty() && isSameFile(output, input)) {
        failBadInput(std::string(option) + ": " + nameOf(output) + " is the input itself");
      }
    }
  }
  if (options.truth.empty()) {
    return;
  }
  if (!options.target.anyGiven()) {
    failBadInput("--truth: describe the target, such as --charuco 14x9 --spacing 40");
  }
  requireWritable("--truth", options.truth);
  if (isSamePath(options.truth, options.output)) {
    failBadInput("--truth and -o are the same file");
  }
}

// The target lies on the picture of the bed. Where only a picture is given, the target's
// description is of what the picture shows.
std::vector<SceneItem> itemsOf(const SimulateOptions& options, const Streams& streams) {
  std::vector<SceneItem> items;
  if (options.bedPicture.empty() != options.bed.empty()) {
    failBadInput("--bed-picture and --bed go together");
  }
  if (!options.bedPicture.empty()) {
    items.push_back({.picture = PlacedPicture(readFrame(options.bedPicture, streams.messages),
                                              parseArea("--bed", options.bed))});
  }
  if (options.target.anyGiven()) {
    SceneItem target = drawnTarget(options.target);
    if (items.empty()) {
      items.push_back(std::move(target));
    } else {
      items.front().points = target.points;
    }
  }
  if (items.empty()) {
    failBadInput("say what lies on the bed: --bed-picture or a target, such as --charuco 14x9");
  }
  constexpr double kFarthest = 1e4;
  items.front().pose.height = valueOf("--height", options.height, -kFarthest, kFarthest);
  return items;
}

Size frameSize(const SimulateOptions& options, const CheckedCamera& camera) {
  if (options.size.empty() && !camera.image) {
    failBadInput("--size: " + nameOf(options.camera) +
                 " does not note the size of the raw frame, so give it");
  }
  const Size size = options.size.empty() ? *camera.image : parseImageSize("--size", options.size);
  constexpr double kMostPixels = 128e6;  // of 16 bytes each in memory
  if (static_cast<double>(size.width) * size.height > kMostPixels) {
    failBadInput("--size: " + sizeText(size) + " is more than 128 million pixels");
  }
  return size;
}

void checkHeight(const PlanePose& pose, const CheckedCamera& camera) {
  const double most = distanceFromBed(camera.param);
  if (pose.height >= most) {
    failBadInput("--height: give less than " + general(most, 6) + ", where the camera is");
  }
}

}  // namespace

int simulateFrame(const SimulateOptions& options, const Streams& streams) {
  if (options.camera.empty()) {
    failBadInput("--camera is missing: the camera's parameter file");
  }
  checkOutputs(options);
  const FrameEffects effects = effectsOf(options);
  const std::uint64_t seed = seedOf(options);
  const CheckedCamera camera = loadCheckedCamera(options.camera, options.force, streams.messages);
  const Size size = frameSize(options, camera);
  const SceneItem item = itemsOf(options, streams).front();
  checkHeight(item.pose, camera);
  const FishEyeCalibrationParam seeing = seenFromPlane(camera.param, item.pose);
  const cv::Mat clean =
      withLight(rawFrame(CornerRays(seeing, size), {{seeing, item.picture}}, kBackground), effects);

  OutputFiles files;
  stagePicture(files, options.output, SensorNoise(effects.noise, seed).added(clean, 0));
  std::vector<CalibrationPoint> points;
  if (!options.truth.empty()) {
    points = seenPoints(seeing, item.points, size);
    files.stage(options.truth, formatPoints(points));
  }
  files.commit();
  streams.out << nameOf(options.output) << ": frame of " << sizeText(size) << " pixels";
  if (!options.truth.empty()) {
    streams.out << "; " << points.size() << " points written to " << nameOf(options.truth);
  }
  streams.out << "\n";
  return kExitOk;
}

}  // namespace fisheye_calibration::program
