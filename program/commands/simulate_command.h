// simulate: what cameras see whose lens and place are known exactly.
#pragma once

#include "commands/command.h"

namespace fisheye_calibration::program {

Command addSimulateCommand(CLI::App& app);

}  // namespace fisheye_calibration::program
