// map: converts points between the frames of a calibrated camera or of a stitched picture.
#pragma once

#include "commands/command.h"

namespace fisheye_calibration::program {

Command addMapCommand(CLI::App& app);

}  // namespace fisheye_calibration::program
