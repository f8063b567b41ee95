// What `calibrate` reads: views of targets, from lists of points or from pictures.
#pragma once

#include <filesystem>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "base/size.h"
#include "calibration/robust_camera.h"
#include "commands/command.h"
#include "commands/target_options.h"
#include "files/output_files.h"

namespace CLI {
class App;
}

namespace fisheye_calibration::program {

// As given on the command line.
struct InputOptions {
  std::vector<std::filesystem::path> views;
  std::filesystem::path bedView;  // empty: the first
  TargetOptions target;
  std::string imageSize;  // "1920x1208"; empty: the picture's
};

void addInputOptions(CLI::App& command, InputOptions& options);

struct CalibrationInputs {
  std::vector<TargetView> views;
  std::size_t bedView = 0;
  Size image;
  cv::Mat background;  // the bed's picture, if it is one
};

// Fails as bad input, for example if the pictures differ in size.
CalibrationInputs readInputs(const InputOptions& options, OutputFiles& files,
                             const Streams& streams);

}  // namespace fisheye_calibration::program
