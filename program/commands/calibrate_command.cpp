#include "commands/calibrate_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "checks/input_checks.h"
#include "checks/result_checks.h"
#include "commands/option_values.h"
#include "commands/target_options.h"
#include "drawing/residual_plot.h"
#include "files/camera_file.h"
#include "files/output_files.h"
#include "files/output_paths.h"
#include "files/picture_file.h"
#include "files/points_csv.h"
#include "files/read_file.h"
#include "reports/calibration_report.h"

namespace fisheye_calibration::program {
namespace {

struct Options {
  std::filesystem::path input;  // points.csv or a picture
  TargetOptions target;
  std::string imageSize;                // "1920x1208"; empty: the picture's
  std::string correctedSize;            // empty: the image size
  std::filesystem::path output;         // camera.ini
  std::filesystem::path residualPlot;   // empty: residuals.png in the output's folder
  std::filesystem::path residualTable;  // empty: residuals.csv in the output's folder
  bool force = false;
};

struct Input {
  std::vector<CalibrationPoint> points;
  Size image;
  Size corrected;
  cv::Mat background;  // the picture, if there is one
};

struct Outputs {
  std::filesystem::path camera;
  std::filesystem::path plot;
  std::filesystem::path table;
};

Outputs checkedOutputs(const Options& options) {
  const std::filesystem::path folder = options.output.parent_path();
  const auto inFolder = [&](const std::filesystem::path& given, const char* name) {
    return given.empty() ? folder / name : given;
  };
  Outputs outputs = {.camera = options.output,
                     .plot = inFolder(options.residualPlot, "residuals.png"),
                     .table = inFolder(options.residualTable, "residuals.csv")};
  const std::pair<const char*, const std::filesystem::path&> all[] = {
      {"-o", outputs.camera},
      {"--residual-plot", outputs.plot},
      {"--residual-table", outputs.table}};
  for (const auto& [option, path] : all) {
    requireWritable(option, path);
    if (isSameFile(path, options.input)) {
      failBadInput(std::string(option) + ": " + nameOf(path) + " is the input itself");
    }
  }
  const auto sameName = [](const std::filesystem::path& a, const std::filesystem::path& b) {
    return a.native() == b.native();
  };
  if (sameName(outputs.camera, outputs.plot) || sameName(outputs.camera, outputs.table) ||
      sameName(outputs.plot, outputs.table)) {
    failBadInput("two outputs have the same name");
  }
  requirePictureName("--residual-plot", outputs.plot);
  return outputs;
}

Input inputFromPicture(const Options& options, OutputFiles& files, const Streams& streams) {
  DetectedTarget found = detectInPicture(options.input, options.target, files, streams);
  const Size image = {.width = found.grey.cols, .height = found.grey.rows};
  return {.points = std::move(found.points), .image = image, .background = found.grey};
}

Input inputFromPoints(const Options& options, const Size& image) {
  const std::string text = readFile(options.input);
  const std::string name = nameOf(options.input);
  if (options.target.anyGiven()) {
    failBadInput(name +
                 ": not a picture that can be read, but options for finding a target are given");
  }
  Input input = {.points = parsePoints(name, text), .image = image};
  if (options.imageSize.empty()) {
    failBadInput("--image-size is missing: a list of points does not contain it");
  }
  return input;
}

Input readInput(const Options& options, OutputFiles& files, const Streams& streams) {
  const bool sizeGiven = !options.imageSize.empty();
  const Size image = sizeGiven ? parseImageSize("--image-size", options.imageSize) : Size();
  const bool correctedGiven = !options.correctedSize.empty();
  const Size corrected =
      correctedGiven ? parseImageSize("--corrected-size", options.correctedSize) : Size();
  Input input;
  if (isPicture(options.input)) {
    input = inputFromPicture(options, files, streams);
    if (sizeGiven && input.image != image) {
      failBadInput("--image-size: the picture has " + sizeText(input.image) + ", not " +
                   options.imageSize);
    }
  } else {
    input = inputFromPoints(options, image);
  }
  input.corrected = correctedGiven ? corrected : input.image;
  return input;
}

CalibrationResult solve(const Input& input, const std::string& name) {
  CalibrationResult result;
  result.points = input.points;
  try {
    // The library does not read the picture that its interface asks for.
    result.homographyFound = SingleCamCalibration(nullptr, input.image.width, input.image.height, 8,
                                                  result.points, input.corrected.width,
                                                  input.corrected.height, result.param, result.rms);
  } catch (const cv::Exception& failure) {
    const std::string condition = onOneLine(failure.err.empty() ? failure.what() : failure.err);
    failJob(name + ": the solver gave up on these points (" + condition + ")");
  }
  return result;
}

void warnBefore(const Findings& findings, std::ostream& messages) {
  for (const Finding& finding : findings) {
    if (finding.severity == Severity::kImpossible) {
      failBadInput(finding.text);
    }
    messages << "warning: " << finding.text << "\n";
  }
}

void stageResiduals(OutputFiles& files, const Outputs& outputs, const Input& input,
                    const CalibrationResult& result, bool trusted) {
  stagePicture(files, outputs.plot,
               drawResidualPlot({.points = result.points,
                                 .image = input.image,
                                 .rms = result.rms,
                                 .trusted = trusted,
                                 .principalPoint = cv::Point2f(result.param.u0, result.param.v0),
                                 .background = input.background}));
  files.stage(outputs.table, formatResiduals(result.points));
}

void reportAfter(const Findings& findings, std::ostream& messages) {
  for (const Finding& finding : findings) {
    const bool impossible = finding.severity == Severity::kImpossible;
    messages << (impossible ? "not to be trusted: " : "warning: ") << finding.text << "\n";
  }
}

int run(const Options& options, const Streams& streams) {
  const Outputs outputs = checkedOutputs(options);
  OutputFiles files;
  const Input input = readInput(options, files, streams);
  warnBefore(checkInput(input.points, input.image), streams.messages);
  streams.progress << "solving with " << input.points.size() << " points ..." << std::endl;
  const CalibrationResult result = solve(input, nameOf(options.input));
  const Findings findings = checkResult(result, input.image, input.corrected);
  const bool trusted = !anyImpossible(findings);

  streams.out << describeResult(result, input.corrected, streams.verbose) << std::flush;
  stageResiduals(files, outputs, input, result, trusted);
  const bool save = trusted || options.force;
  if (save) {
    stageCamera(files, outputs.camera, result.param);
  }
  files.commit();

  reportAfter(findings, streams.messages);
  streams.out << "\nResiduals: " << nameOf(outputs.plot) << ", " << nameOf(outputs.table) << "\n";
  if (save) {
    streams.out << "Camera: " << nameOf(outputs.camera)
                << (trusted ? "\n" : " (written all the same)\n");
  } else {
    streams.messages << "the result is not to be trusted; " << nameOf(outputs.camera)
                     << " was not written (--force writes it all the same)\n";
  }
  return trusted ? kExitOk : kExitJobFailed;
}

}  // namespace

Command addCalibrateCommand(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command =
      app.add_subcommand("calibrate", "Calibrate the camera from points, or from a picture");
  addPath(*command, "input", options->input, "points (CSV), or a picture of the target")
      ->required();
  command
      ->add_option("--image-size", options->imageSize,
                   "size of the camera's picture; needed with points")
      ->type_name("WxH");
  command
      ->add_option("--corrected-size", options->correctedSize,
                   "size of the corrected picture (default: the image size)")
      ->type_name("WxH");
  addPath(*command, "-o,--output", options->output, "the camera's parameter file")
      ->type_name("INI")
      ->required();
  addPath(*command, "--residual-plot", options->residualPlot,
          "picture of the residuals (default: residuals.png beside the output)")
      ->type_name("PICTURE");
  addPath(*command, "--residual-table", options->residualTable,
          "the residuals (default: residuals.csv beside the output)")
      ->type_name("CSV");
  command->add_flag("--force", options->force, "write the camera even if it is not to be trusted");
  addTargetOptions(*command, options->target);
  command->footer(
      "Examples:\n"
      "  fisheye-calibration calibrate points.csv --image-size 1920x1208 -o camera.ini\n"
      "  fisheye-calibration calibrate photo.png --chessboard 8x6 --spacing 39 -o camera.ini");
  return {command, [options](const Streams& streams) { return run(*options, streams); }};
}

}  // namespace fisheye_calibration::program
