// Whether somebody watches.
#pragma once

namespace fisheye_calibration::program {

// True if standard error goes to a terminal.
bool isErrorTerminal();

}  // namespace fisheye_calibration::program
