// calibrate: from points, or a picture of the target, to a camera's parameter file.
#pragma once

#include <iosfwd>
#include <string>

#include "commands/detect_command.h"

namespace fisheye_calibration::program {

struct CalibrateOptions {
  std::string input;  // points.csv or a picture
  TargetOptions target;
  std::string imageSize;      // "1920x1208", empty: the picture's
  std::string correctedSize;  // empty: the image size
  std::string output;         // camera.ini
  std::string residualPlot;   // empty: residuals.png beside the output
  std::string residualTable;  // empty: residuals.csv beside the output
  bool force = false;
};

int runCalibrate(const CalibrateOptions& options, std::ostream& out, std::ostream& messages);

}  // namespace fisheye_calibration::program
