// What `calibrate` warns of.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "calibration/camera_choice.h"
#include "calibration/robust_camera.h"
#include "calibration/seen_bed.h"
#include "commands/calibration_inputs.h"

namespace fisheye_calibration::program {

// Warnings go to the user at once and are collected for the JSON file.
class Warnings {
 public:
  explicit Warnings(std::ostream& messages) : messages_(messages) {}

  void add(const std::string& text, const char* severity = "warning");

  const std::vector<std::string>& texts() const { return texts_; }

 private:
  std::ostream& messages_;
  std::vector<std::string> texts_;
};

// Fails as bad input if the points cannot be used.
void warnOfPoints(const CalibrationInputs& inputs, SolverChoice solver, Warnings& warnings);

// Names the points and views that contradict the others.
void warnOfWrongOnes(const RobustCamera& robust, const RobustRequest& request, Warnings& warnings);

// Whether the record that was chosen can be trusted.
bool checkChosen(const ChosenCamera& chosen, const RobustRequest& request, Warnings& warnings);

// Fails as a job if nothing of the wished bed is shown.
void warnOfBed(const SeenShares& seen, Warnings& warnings);

}  // namespace fisheye_calibration::program
