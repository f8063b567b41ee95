// calibrate: from points, or a picture of the target, to a camera's parameter file.
#pragma once

#include "commands/command.h"

namespace fisheye_calibration::program {

Command addCalibrateCommand(CLI::App& app);

}  // namespace fisheye_calibration::program
