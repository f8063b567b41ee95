// target: draws a target to be printed or engraved, and lists its points.
#pragma once

#include "commands/command.h"

namespace fisheye_calibration::program {

Command addTargetCommand(CLI::App& app);

}  // namespace fisheye_calibration::program
