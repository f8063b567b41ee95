// info: shows a camera's parameter file in readable form and what is impossible in it.
#pragma once

#include "commands/command.h"

namespace fisheye_calibration::program {

Command addInfoCommand(CLI::App& app);

}  // namespace fisheye_calibration::program
