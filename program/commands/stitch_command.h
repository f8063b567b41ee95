// stitch: joins the frames of two cameras over one bed.
#pragma once

#include "commands/command.h"

namespace fisheye_calibration::program {

Command addStitchCommand(CLI::App& app);

}  // namespace fisheye_calibration::program
