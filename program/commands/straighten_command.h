// straighten: runs the library's perspective aid on its fixed files.
#pragma once

#include "commands/command.h"

namespace fisheye_calibration::program {

Command addStraightenCommand(CLI::App& app);

}  // namespace fisheye_calibration::program
