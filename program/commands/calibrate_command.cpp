#include "commands/calibrate_command.h"

#include <filesystem>
#include <ostream>
#include <utility>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "checks/finding.h"
#include "checks/input_checks.h"
#include "checks/result_checks.h"
#include "commands/option_values.h"
#include "drawing/residual_plot.h"
#include "files/camera_file.h"
#include "files/output_files.h"
#include "files/output_places.h"
#include "files/picture_file.h"
#include "files/points_csv.h"
#include "files/read_file.h"
#include "reports/calibration_report.h"

namespace fisheye_calibration::program {
namespace {

struct Input {
  std::vector<CalibrationPoint> points;
  Size image;
  Size corrected;
  cv::Mat background;
};

struct Outputs {
  std::string camera;
  std::string plot;
  std::string table;
};

Outputs checkedOutputs(const CalibrateOptions& options) {
  const std::filesystem::path folder = filePath(options.output).parent_path();
  const auto beside = [&](const std::string& given, const char* name) {
    return given.empty() ? (folder / name).string() : given;
  };
  Outputs outputs{options.output, beside(options.residualPlot, "residuals.png"),
                  beside(options.residualTable, "residuals.csv")};
  const struct {
    const char* option;
    const std::string& path;
  } all[] = {{"-o", outputs.camera},
             {"--residual-plot", outputs.plot},
             {"--residual-table", outputs.table}};
  for (const auto& [option, path] : all) {
    requireWritablePlace(option, path);
    if (isSameFile(path, options.input)) {
      failBadInput(std::string(option) + ": " + path + " is the input itself");
    }
  }
  if (outputs.camera == outputs.plot || outputs.camera == outputs.table ||
      outputs.plot == outputs.table) {
    failBadInput("two outputs have the same name");
  }
  requirePictureName("--residual-plot", outputs.plot);
  return outputs;
}

Input readInput(const CalibrateOptions& options, OutputFiles& files, std::ostream& messages) {
  Input input;
  const bool sizeGiven = !options.imageSize.empty();
  if (sizeGiven) {
    input.image = parseSize("--image-size", options.imageSize, 1, kLargestImageSide);
  }
  if (!options.correctedSize.empty()) {
    input.corrected = parseSize("--corrected-size", options.correctedSize, 1, kLargestImageSide);
  }
  if (isPicture(options.input)) {
    DetectedTarget found = detectInPicture(options.input, options.target, files, messages);
    const Size actual{found.grey.cols, found.grey.rows};
    if (sizeGiven && (actual.width != input.image.width || actual.height != input.image.height)) {
      failBadInput("--image-size: the picture has " + std::to_string(actual.width) + "x" +
                   std::to_string(actual.height) + ", not " + options.imageSize);
    }
    input.image = actual;
    input.points = std::move(found.points);
    input.background = found.grey;
  } else {
    const std::string text = readFile(options.input);
    if (options.target.anyGiven() || !options.target.overlay.empty()) {
      failBadInput(options.input +
                   ": not a picture that can be read, but options for finding a target are given");
    }
    input.points = parsePoints(options.input, text);
    if (!sizeGiven) {
      failBadInput("--image-size is missing: a list of points does not tell it");
    }
  }
  if (options.correctedSize.empty()) {
    input.corrected = input.image;
  }
  return input;
}

CalibrationResult solve(const Input& input, const std::string& name) {
  CalibrationResult result;
  result.points = input.points;
  try {
    // The library takes the picture for the sake of its interface only and reads nothing of it.
    result.homographyFound = SingleCamCalibration(nullptr, input.image.width, input.image.height, 8,
                                                  result.points, input.corrected.width,
                                                  input.corrected.height, result.param, result.rms);
  } catch (const cv::Exception& failure) {
    const std::string condition = onOneLine(failure.err.empty() ? failure.what() : failure.err);
    failJob(name + ": the solver gave up on these points (" + condition + ")");
  }
  return result;
}

void stageResiduals(OutputFiles& files, const Outputs& outputs, const Input& input,
                    const CalibrationResult& result, bool trusted) {
  const ResidualPlot plot{
      result.points,
      input.image,
      result.rms,
      trusted,
      {static_cast<double>(result.param.u0), static_cast<double>(result.param.v0)},
      input.background};
  files.stage(outputs.plot, encodePicture(outputs.plot, drawResidualPlot(plot)));
  files.stage(outputs.table, formatResiduals(result.points));
}

void warnBefore(const std::vector<Finding>& findings, std::ostream& messages) {
  for (const Finding& finding : findings) {
    if (finding.severity == Severity::kImpossible) {
      failBadInput(finding.text);
    }
    messages << "warning: " << finding.text << "\n";
  }
}

}  // namespace

int runCalibrate(const CalibrateOptions& options, std::ostream& out, std::ostream& messages) {
  const Outputs outputs = checkedOutputs(options);
  OutputFiles files;
  const Input input = readInput(options, files, messages);
  warnBefore(checkInput(input.points, input.image), messages);
  messages << "solving with " << input.points.size() << " points ..." << std::endl;
  const CalibrationResult result = solve(input, options.input);
  const std::vector<Finding> findings = checkResult(result, input.image, input.corrected);
  const bool trusted = !anyImpossible(findings);

  out << describeResult(result, input.corrected) << std::flush;
  stageResiduals(files, outputs, input, result, trusted);
  const bool save = trusted || options.force;
  if (save) {
    stageCamera(files, outputs.camera, result.param);
  }
  files.commit();

  for (const Finding& finding : findings) {
    const bool impossible = finding.severity == Severity::kImpossible;
    messages << (impossible ? "not to be trusted: " : "warning: ") << finding.text << "\n";
  }
  out << "\nResiduals: " << outputs.plot << ", " << outputs.table << "\n";
  if (save) {
    out << "Camera: " << outputs.camera << (trusted ? "\n" : " (written all the same)\n");
  } else {
    messages << "the result is not to be trusted; " << outputs.camera
             << " was not written (--force writes it all the same)\n";
  }
  return trusted ? kExitOk : kExitJobFailed;
}

}  // namespace fisheye_calibration::program
