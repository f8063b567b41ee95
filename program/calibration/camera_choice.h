// Which of two solvers' cameras is written, and how accurate it is.
#pragma once

#include <string>
#include <vector>

#include "calibration/bed_accuracy.h"
#include "calibration/robust_camera.h"

namespace fisheye_calibration::program {

enum class SolverChoice { kAuto, kLibrary, kRobust };

struct ChosenCamera {
  CalibrationResult result;
  BedAccuracy accuracy;
  bool fromLibrary = false;
  std::string reason;  // one line if the library's camera was given up for the robust one's
};

// Calls SingleCamCalibration with the points but those at the positions `leftOut`, which get their
// reprojections all the same. Fails as a job, naming the view, if the solver raises an error.
CalibrationResult solveByLibrary(const TargetView& view, const std::vector<std::size_t>& leftOut,
                                 const Size& image, const Size& corrected);

// With kAuto, the library's camera from the bed's view, unless it cannot be trusted (checkResult)
// or may be off on the bed by more than 1.5 times what the robust one may be off by, and by more
// than the tolerance (0: none given). Several views and a lens known beforehand are for the robust
// solver alone. Everything on the bed is judged over the area that the corrected picture shows. If
// the robust solver refused, the camera is the library's and its accuracy unknown.
ChosenCamera chooseCamera(SolverChoice choice, const RobustCamera& robust,
                          const RobustRequest& request, double tolerance);

}  // namespace fisheye_calibration::program
