#include "commands/calibration_outputs.h"

#include <cstddef>
#include <utility>

#include "base/failure.h"
#include "base/file_path.h"
#include "commands/declared_options.h"
#include "drawing/accuracy_map.h"
#include "drawing/residual_plot.h"
#include "files/output_paths.h"
#include "files/picture_file.h"
#include "files/points_csv.h"
#include "geometry/point_spread.h"
#include "report_pages/calibration_page.h"

namespace fisheye_calibration::program {
namespace {

cv::Mat residualPlot(const CalibrationInputs& inputs, const CalibrationResult& result,
                     bool trusted) {
  return drawResidualPlot({.points = result.points,
                           .image = inputs.image,
                           .rms = result.rms,
                           .trusted = trusted,
                           .principalPoint = cv::Point2f(result.param.u0, result.param.v0),
                           .background = inputs.background});
}

cv::Mat accuracyMap(const ChosenCamera& chosen) {
  return drawAccuracyMap({.grid = chosen.accuracy.grid,
                          .errors = chosen.accuracy.errors,
                          .target = bedPositions(chosen.result.points),
                          .insideTarget = chosen.accuracy.insideTarget,
                          .onBed = chosen.accuracy.onBed});
}

}  // namespace

void addOutputOptions(CLI::App& command, OutputOptions& options) {
  addPath(command, "-o,--output", options.camera, "the camera's parameter file")
      .typeName("INI")
      .required();
  addPath(command, "--residual-plot", options.residualPlot,
          "picture of the residuals (default: residuals.png beside the output)")
      .typeName("PICTURE");
  addPath(command, "--residual-table", options.residualTable,
          "the residuals (default: residuals.csv beside the output)")
      .typeName("CSV");
  addPath(command, "--accuracy-map", options.accuracyMap,
          "picture of the error on the bed (default: accuracy.png beside the output)")
      .typeName("PICTURE");
  addPath(command, "--json", options.json, "everything that is reported, for programs")
      .typeName("FILE");
  addPath(command, "--report", options.report,
          "everything that is reported, as a page for a browser in one file")
      .typeName("HTML");
  addPath(command, "--report-frame", options.reportFrame,
          "picture of the bed for the page, if the points come from a list")
      .typeName("PICTURE");
}

OutputOptions checkedOutputs(const OutputOptions& options,
                             const std::vector<std::filesystem::path>& inputs) {
  OutputOptions outputs = options;
  const std::filesystem::path folder = options.camera.parent_path();
  const auto complete = [&](std::filesystem::path& path, const char* name) {
    path = path.empty() ? folder / name : path;
  };
  complete(outputs.residualPlot, "residuals.png");
  complete(outputs.residualTable, "residuals.csv");
  complete(outputs.accuracyMap, "accuracy.png");
  std::vector<std::pair<std::string, std::filesystem::path>> all = {
      {"-o", outputs.camera},
      {"--residual-plot", outputs.residualPlot},
      {"--residual-table", outputs.residualTable},
      {"--accuracy-map", outputs.accuracyMap}};
  if (!outputs.json.empty()) {
    all.emplace_back("--json", outputs.json);
  }
  if (!outputs.report.empty()) {
    all.emplace_back("--report", outputs.report);
  }
  for (std::size_t i = 0; i < all.size(); ++i) {
    const auto& [option, path] = all[i];
    requireWritable(option, path);
    if (!outputs.reportFrame.empty() && isSameFile(path, outputs.reportFrame)) {
      failBadInput(option + ": " + nameOf(path) + " is the input itself");
    }
    for (const std::filesystem::path& input : inputs) {
      if (isSameFile(path, input)) {
        failBadInput(option + ": " + nameOf(path) + " is the input itself");
      }
    }
    for (std::size_t j = 0; j < i; ++j) {
      if (path.native() == all[j].second.native()) {
        failBadInput("two outputs have the same name");
      }
    }
  }
  requirePictureName("--residual-plot", outputs.residualPlot);
  requirePictureName("--accuracy-map", outputs.accuracyMap);
  return outputs;
}

cv::Mat readReportFrame(const OutputOptions& outputs, const CalibrationInputs& inputs,
                        std::ostream& messages) {
  if (outputs.reportFrame.empty()) {
    return outputs.report.empty() ? cv::Mat() : inputs.background;
  }
  if (outputs.report.empty()) {
    failBadInput("--report-frame: there is no --report to show it");
  }
  cv::Mat frame = readFrame(outputs.reportFrame, messages);
  const Size size{frame.cols, frame.rows};
  if (size != inputs.image) {
    failBadInput("--report-frame: " + nameOf(outputs.reportFrame) + " has " + sizeText(size) +
                 " pixels, the views " + sizeText(inputs.image));
  }
  return frame;
}

void stageReports(OutputFiles& files, const OutputOptions& outputs, const CalibrationInputs& inputs,
                  const CalibrationReport& report, const Outcomes& outcomes,
                  const cv::Mat& reportFrame) {
  const CalibrationResult& result = report.chosen.result;
  stagePicture(files, outputs.residualPlot, residualPlot(inputs, result, outcomes.trusted));
  stagePicture(files, outputs.accuracyMap, accuracyMap(report.chosen));
  files.stage(outputs.residualTable,
              formatResiduals(result.points, report.robust.solved.wrongPoints[inputs.bedView]));
  if (!outputs.json.empty()) {
    files.stage(outputs.json, formatJson(report));
  }
  if (!outputs.report.empty()) {
    files.stage(outputs.report, calibrationPage({.report = report,
                                                 .cameraName = nameOf(outputs.camera),
                                                 .trusted = outcomes.trusted,
                                                 .saved = outcomes.saved,
                                                 .bedPicture = reportFrame}));
  }
}

}  // namespace fisheye_calibration::program
