// hand-eye: fits the affine map from raw-image pixels to the work plane.
#pragma once

#include "commands/command.h"

namespace fisheye_calibration::program {

Command addHandEyeCommand(CLI::App& app);

}  // namespace fisheye_calibration::program
