// The files that `calibrate` writes.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "calibration/camera_choice.h"
#include "commands/calibration_inputs.h"
#include "files/output_files.h"
#include "reports/calibration_json.h"

namespace CLI {
class App;
}

namespace fisheye_calibration::program {

// As given on the command line.
struct OutputOptions {
  std::filesystem::path camera;
  std::filesystem::path residualPlot;   // empty: residuals.png in the camera's folder
  std::filesystem::path residualTable;  // empty: residuals.csv in the camera's folder
  std::filesystem::path accuracyMap;    // empty: accuracy.png in the camera's folder
  std::filesystem::path json;           // empty: none
};

void addOutputOptions(CLI::App& command, OutputOptions& options);

// With the names that were left to the program. Fails as bad input if one cannot be written, is an
// input or is there twice.
OutputOptions checkedOutputs(const OutputOptions& options,
                             const std::vector<std::filesystem::path>& inputs);

// Stages everything but the camera.
void stageReports(OutputFiles& files, const OutputOptions& outputs, const CalibrationInputs& inputs,
                  const CalibrationReport& report, bool trusted);

}  // namespace fisheye_calibration::program
