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

struct SavedFiles {
  std::vector<std::string> names;
  std::string note;  // of what was left out or does not fit; empty: nothing
};

// Writes camera.ini, points.csv and report.html, numbered if there are two cameras, and dual.ini
// and dual.html if there is a stitch that is to be trusted. Everything is staged before anything is
// replaced.
SavedFiles saveFiles(const std::filesystem::path& folder, const Outcomes& outcomes,
                     const std::shared_ptr<const StitchOutcome>& stitch);

// "camera.ini", "camera1.ini" ...
std::string cameraFileName(std::size_t source, std::size_t sources);

// The same texts for downloads.
std::string cameraText(const CalibrationOutcome& outcome);
std::string pointsText(const CalibrationOutcome& outcome);
std::string reportText(const CalibrationOutcome& outcome);  // JSON
// HTML. Calls the camera by the name of its file.
std::string reportPage(const CalibrationOutcome& outcome, const std::string& camera);
std::string dualText(const StitchOutcome& stitch);
std::string dualPage(const StitchOutcome& stitch);  // HTML

}  // namespace fisheye_calibration::program
