// detect: finds the target in a picture and writes its numbered points.
#pragma once

#include "commands/command.h"

namespace fisheye_calibration::program {

Command addDetectCommand(CLI::App& app);

}  // namespace fisheye_calibration::program
