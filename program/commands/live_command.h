#pragma once

#include "commands/command.h"

namespace fisheye_calibration::program {

Command addLiveCommand(CLI::App& app);

}  // namespace fisheye_calibration::program
