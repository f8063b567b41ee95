// calibrate: solves a camera from points, or from a picture of the target.
#pragma once

#include "commands/command.h"

namespace fisheye_calibration::program {

Command addCalibrateCommand(CLI::App& app);

}  // namespace fisheye_calibration::program
