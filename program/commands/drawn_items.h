// What the program itself draws for a simulated bed.
#pragma once

#include "commands/target_options.h"
#include "simulation/simulated_machine.h"

namespace fisheye_calibration::program {

// The sheet with the target, such that its points lie where the options say. Fails as bad input if
// the options describe no target or too large a one.
SceneItem drawnTarget(const TargetOptions& options);

// Crosses, engraved into the bed at multiples of the spacing, with their X and Y. Points are
// numbered row by row from 1.
SceneItem drawnMarks(const cv::Rect2d& bed, double spacing);

}  // namespace fisheye_calibration::program
