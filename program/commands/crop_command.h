// crop: cuts the centred rectangle out of a picture.
#pragma once

#include "commands/command.h"

namespace fisheye_calibration::program {

Command addCropCommand(CLI::App& app);

}  // namespace fisheye_calibration::program
