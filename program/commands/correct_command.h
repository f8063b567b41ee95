// correct: renders the view from above of one or many frames.
#pragma once

#include "commands/command.h"

namespace fisheye_calibration::program {

Command addCorrectCommand(CLI::App& app);

}  // namespace fisheye_calibration::program
