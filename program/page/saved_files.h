// The files that a set-up leaves: in the folder of the command line, under fixed names.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "page/calibration_job.h"
#include "page/stitch_job.h"

namespace fisheye_calibration::program {

using Outcomes = std::vector<std::shared_ptr<const CalibrationOutcome>>;

// Writes camera.ini, points.csv and report.html, numbered if there are two cameras, and dual.ini if
// there is a stitch. Everything is staged before anything is replaced. Returns the names.
std::vector<std::string> saveFiles(const std::filesystem::path& folder, const Outcomes& outcomes,
                                   const std::shared_ptr<const StitchOutcome>& stitch);

// The same texts for downloads.
std::string cameraText(const CalibrationOutcome& outcome);
std::string pointsText(const CalibrationOutcome& outcome);
std::string reportText(const CalibrationOutcome& outcome);  // JSON
std::string reportPage(const CalibrationOutcome& outcome);  // HTML
std::string dualText(const StitchOutcome& stitch);

}  // namespace fisheye_calibration::program
