// The accuracy of a calibration as text: the line with millimetres, what would improve it, and
// whether it is good enough.
#pragma once

#include <string>
#include <vector>

#include "calibration/bed_accuracy.h"
#include "calibration/remedy.h"

namespace fisheye_calibration::program {

struct Verdict {
  bool good = false;
  std::string text;  // "good for 0.5 mm work", "redo: add a view of the board ..."
};

// "bed error (95 %): 0.4 mm inside the target, 1.1 mm on the bed"
std::string describeAccuracy(const BedAccuracy& accuracy);

// Good if the bound on the bed is within the tolerance; without one (0), if it is below 3 % of the
// target's diagonal on the bed or at least around the target.
Verdict verdictOn(const BedAccuracy& accuracy, double targetDiagonal, double tolerance,
                  const std::vector<Remedy>& remedies);

}  // namespace fisheye_calibration::program
