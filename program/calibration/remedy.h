// What would make a calibration more accurate, by how much: computed, before anybody tries it.
#pragma once

#include <string>
#include <vector>

#include "calibration/bed_accuracy.h"
#include "calibration/robust_camera.h"

namespace fisheye_calibration::program {

struct Remedy {
  std::string advice;  // "add a view with the board tilted by 25 degrees"
  double onBed = 0;    // the bound on the bed that it would give, world units
};

// The remedies that are possible with the target and the picture, in the order of the work that
// they make: a tilted view, a larger target, four tilted views. Views in which the target would
// leave the picture are not proposed.
std::vector<Remedy> remediesFor(const RobustCamera& camera, const RobustRequest& request,
                                const BedAccuracy& accuracy);

// Those that leave less than the present bound, the one that helps most first. All of them if that
// is unknown.
std::vector<Remedy> helpfulRemedies(std::vector<Remedy> remedies, double now);

// The first remedy that reaches the wanted bound, otherwise the one that helps most; null if there
// is none or none gains a tenth.
const Remedy* bestRemedy(const std::vector<Remedy>& remedies, double now, double wanted);

}  // namespace fisheye_calibration::program
