#include "commands/calibration_inputs.h"

#include <cstddef>
#include <optional>
#include <utility>

#include "base/failure.h"
#include "base/file_path.h"
#include "commands/declared_options.h"
#include "commands/option_values.h"
#include "files/output_paths.h"
#include "files/picture_file.h"
#include "files/points_csv.h"
#include "files/read_file.h"

namespace fisheye_calibration::program {
namespace {

struct ReadView {
  TargetView view;
  cv::Mat picture;  // empty for a list of points
};

ReadView readView(const std::filesystem::path& path, const TargetOptions& target,
                  OutputFiles& files, const Streams& streams) {
  const std::string name = nameOf(path);
  if (isPicture(path)) {
    DetectedTarget found = detectInPicture(path, target, files, streams);
    return {{name, std::move(found.points)}, found.grey};
  }
  return {{name, parsePoints(name, readFile(path))}, {}};
}

std::size_t bedViewOf(const InputOptions& options) {
  if (options.bedView.empty()) {
    return 0;
  }
  for (std::size_t i = 0; i < options.views.size(); ++i) {
    if (isSameFile(options.views[i], options.bedView)) {
      return i;
    }
  }
  failBadInput("--bed-view: " + nameOf(options.bedView) + " is none of the views");
}

// All pictures have one size, which --image-size must not contradict; lists of points have none.
Size commonSize(const InputOptions& options, const std::vector<ReadView>& views) {
  std::optional<Size> size;
  if (!options.imageSize.empty()) {
    size = parseImageSize("--image-size", options.imageSize);
  }
  for (const ReadView& view : views) {
    if (view.picture.empty()) {
      continue;
    }
    const Size own{.width = view.picture.cols, .height = view.picture.rows};
    if (size && own != *size) {
      failBadInput(view.view.name + ": the picture has " + sizeText(own) + ", not " +
                   sizeText(*size));
    }
    size = own;
  }
  if (!size) {
    failBadInput("--image-size is missing: a list of points does not contain it");
  }
  return *size;
}

}  // namespace

void addInputOptions(CLI::App& command, InputOptions& options) {
  addPaths(command, "views", options.views,
           "points (CSV) or pictures of the target; the first one's lies on the bed")
      .required();
  addPath(command, "--bed-view", options.bedView,
          "the view whose target lies on the bed (default: the first)")
      .typeName("FILE");
  addOption(command, "--image-size", options.imageSize,
            "size of the camera's picture; needed with points")
      .typeName("WxH");
  addTargetOptions(command, options.target);
}

CalibrationInputs readInputs(const InputOptions& options, OutputFiles& files,
                             const Streams& streams) {
  if (!options.imageSize.empty()) {
    parseImageSize("--image-size", options.imageSize);
  }
  CalibrationInputs inputs;
  inputs.bedView = bedViewOf(options);
  std::vector<ReadView> views;
  bool anyPicture = false;
  for (std::size_t i = 0; i < options.views.size(); ++i) {
    TargetOptions target = options.target;
    if (i != inputs.bedView) {
      target.overlay.clear();  // of the bed's view only
    }
    views.push_back(readView(options.views[i], target, files, streams));
    anyPicture = anyPicture || !views.back().picture.empty();
  }
  if (!anyPicture && options.target.anyGiven()) {
    failBadInput(nameOf(options.views.front()) +
                 ": not a picture that can be read, but options for finding a target are given");
  }
  inputs.image = commonSize(options, views);
  inputs.background = views[inputs.bedView].picture;
  for (ReadView& view : views) {
    inputs.views.push_back(std::move(view.view));
  }
  return inputs;
}

}  // namespace fisheye_calibration::program
