// correct: renders frames as seen from above.
#pragma once

#include "commands/command.h"

namespace fisheye_calibration::program {

Command addCorrectCommand(CLI::App& app);

}  // namespace fisheye_calibration::program
