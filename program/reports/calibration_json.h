// Everything that `calibrate` reports, for programs.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/size.h"
#include "calibration/camera_choice.h"
#include "calibration/remedy.h"
#include "calibration/robust_camera.h"
#include "reports/accuracy_report.h"

namespace fisheye_calibration::program {

struct CalibrationReport {
  const RobustRequest& request;
  const RobustCamera& robust;
  const ChosenCamera& chosen;
  const std::vector<Remedy>& remedies;
  const Verdict& verdict;
  double tolerance = 0;                           // world units; 0 if none was given
  std::optional<SeenShares> seen = std::nullopt;  // of the bed that was asked for
  std::vector<std::string> warnings;
};

// JSON (RFC 8259). Numbers that are not finite are null.
std::string formatJson(const CalibrationReport& report);

}  // namespace fisheye_calibration::program
