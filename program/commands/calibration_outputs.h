// The files that `calibrate` writes.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <opencv2/core.hpp>
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
  std::filesystem::path report;         // a page for people; empty: none
  std::filesystem::path reportFrame;    // the bed's picture for it, if points are from a list
};

void addOutputOptions(CLI::App& command, OutputOptions& options);

// With the names that were left to the program. Fails as bad input if one cannot be written, is an
// input or is there twice.
OutputOptions checkedOutputs(const OutputOptions& options,
                             const std::vector<std::filesystem::path>& inputs);

// The raw frame for the page: the picture that was named for it, otherwise the view of the bed, if
// that is one; empty if there is neither or no page. Fails as bad input if it has another size than
// the views.
cv::Mat readReportFrame(const OutputOptions& outputs, const CalibrationInputs& inputs,
                        std::ostream& messages);

// How the calibration came out.
struct Outcomes {
  bool trusted = true;
  bool saved = true;
};

// Stages everything but the camera.
void stageReports(OutputFiles& files, const OutputOptions& outputs, const CalibrationInputs& inputs,
                  const CalibrationReport& report, const Outcomes& outcomes,
                  const cv::Mat& reportFrame);

}  // namespace fisheye_calibration::program
