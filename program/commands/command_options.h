// The options of every command, with their help: each function adds one command, whose options end
// up in the given record.
#pragma once

#include <string>

#include "commands/calibrate_command.h"
#include "commands/correct_command.h"
#include "commands/crop_command.h"
#include "commands/detect_command.h"
#include "commands/hand_eye_command.h"
#include "commands/map_command.h"
#include "commands/stitch_command.h"
#include "commands/straighten_command.h"

namespace CLI {
class App;
}

namespace fisheye_calibration::program {

void addDetect(CLI::App& app, DetectOptions& options);
void addCalibrate(CLI::App& app, CalibrateOptions& options);
void addMap(CLI::App& app, MapOptions& options);
void addInfo(CLI::App& app, std::string& path);
void addHandEye(CLI::App& app, HandEyeOptions& options);

void addCorrect(CLI::App& app, CorrectOptions& options);
void addCrop(CLI::App& app, CropOptions& options);
void addStitch(CLI::App& app, StitchOptions& options);
void addStraighten(CLI::App& app, StraightenOptions& options);

}  // namespace fisheye_calibration::program
