// verify: checks with one photo whether a camera file is still true.
#pragma once

#include "commands/command.h"

namespace fisheye_calibration::program {

Command addVerifyCommand(CLI::App& app);

}  // namespace fisheye_calibration::program
