#include "commands/calibrate_command.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "calibration/camera_choice.h"
#include "calibration/remedy.h"
#include "checks/record_checks.h"
#include "commands/calibration_inputs.h"
#include "commands/calibration_outputs.h"
#include "commands/calibration_warnings.h"
#include "commands/declared_options.h"
#include "commands/option_values.h"
#include "commands/picture_options.h"
#include "files/camera_file.h"
#include "files/camera_notes.h"
#include "reports/accuracy_report.h"
#include "reports/calibration_json.h"
#include "reports/calibration_notes.h"
#include "reports/calibration_report.h"
#include "reports/picture_report.h"
#include "robust/robust_input.h"
#include "single/record.h"

namespace fisheye_calibration::program {
namespace {

struct CalibrateOptions {
  InputOptions inputs;
  OutputOptions outputs;
  PictureOptions picture;
  std::string tolerance;       // "0.5"; empty: none
  std::filesystem::path lens;  // a camera file whose lens is kept; empty: none
  SolverChoice solver = SolverChoice::kAuto;
  bool keepAll = false;
  bool force = false;
};

// The lens of a camera file, with the covariance that the program noted there.
robust::HeldLens lensOf(const std::filesystem::path& path, Warnings& warnings) {
  const CameraFile file = loadCamera(path);
  const Findings findings = checkRecord(file.param);
  if (!file.complaints.empty() || anyImpossible(findings)) {
    failBadInput("--lens: " + (file.complaints.empty() ? nameOf(path) + ": " + findings.front().text
                                                       : file.complaints.front()));
  }
  robust::HeldLens lens{single::rawCamera(file.param), cv::Matx66d::zeros()};
  if (const auto covariance = loadNotes(path).lensCovariance) {
    std::copy(covariance->begin(), covariance->end(), lens.covariance.val);
    if (!robust::isCovariance(lens.covariance)) {
      failBadInput("--lens: " + nameOf(path) + ": LensCovariance is not a covariance");
    }
  } else {
    warnings.add(nameOf(path) + " does not say how accurate its lens is; it counts as exact");
  }
  return lens;
}

RobustRequest requestOf(const CalibrateOptions& options, const CalibrationInputs& inputs,
                        Warnings& warnings) {
  return {
      .views = inputs.views,
      .bedView = inputs.bedView,
      .image = inputs.image,
      .picture = pictureOf(options.picture),
      .lens = options.lens.empty() ? std::nullopt : std::optional(lensOf(options.lens, warnings)),
      .keepAll = options.keepAll};
}

// With --solver library a refusal of the robust solver costs the accuracy only.
RobustCamera solve(const RobustRequest& request, SolverChoice solver, Warnings& warnings) {
  try {
    return solveRobustly(request);
  } catch (const Failure& refusal) {
    if (solver != SolverChoice::kLibrary) {
      throw;
    }
    warnings.add(std::string("no accuracy can be computed: ") + refusal.what());
    return unsolvedCamera(request);
  }
}

std::optional<SeenShares> seenOfBed(const ChosenCamera& chosen, const RobustRequest& request) {
  if (!request.picture.bed) {
    return std::nullopt;
  }
  return seenShares(chosen.result.param, request.image, chosen.result.corrected,
                    *request.picture.bed);
}

std::string nextStep(const CalibrateOptions& options, const CalibrationReport& report) {
  const std::string camera = nameOf(options.outputs.camera);
  if (!report.verdict.good && options.picture.bed.empty() &&
      report.chosen.accuracy.aroundTarget <= report.tolerance) {
    return "next: if the bed is smaller than the corrected picture, name it by --bed "
           "X,Y,WIDTHxHEIGHT; around the target, the error is within the tolerance";
  }
  if (report.verdict.good) {
    return "next: fisheye-calibration correct --camera " + camera + " FRAME -o corrected.png";
  }
  return "next: fisheye-calibration calibrate " + nameOf(options.inputs.views.front()) +
         " NEW_VIEWS... -o " + camera;
}

void reportOutcome(const CalibrateOptions& options, const OutputOptions& outputs,
                   const CalibrationReport& report, bool trusted, bool saved,
                   const Streams& streams) {
  const CalibrationResult& result = report.chosen.result;
  streams.out << "\n"
              << describePicture(result.param, result.corrected,
                                 shownArea(result.param, result.corrected))
              << "\n";
  if (report.seen && describeMissing(*report.seen).empty()) {
    streams.out << "The whole bed is seen, all of it with at least a third of the best sharpness\n";
  }
  streams.out << "Residuals: " << nameOf(outputs.residualPlot) << ", "
              << nameOf(outputs.residualTable) << "\nBed error: " << nameOf(outputs.accuracyMap)
              << "\n";
  if (!outputs.report.empty()) {
    streams.out << "Report: " << nameOf(outputs.report) << "\n";
  }
  if (saved) {
    streams.out << "Camera: " << nameOf(outputs.camera)
                << (trusted ? "\n" : " (written all the same)\n");
  } else {
    streams.messages << "the result is not " << (trusted ? "accurate enough" : "to be trusted")
                     << "; " << nameOf(outputs.camera)
                     << " was not written (--force writes it all the same)\n";
  }
  if (!report.chosen.reason.empty()) {
    streams.out << report.chosen.reason << "\n";
  }
  streams.out << describeAccuracy(report.chosen.accuracy) << "\n"
              << report.verdict.text << "\n"
              << nextStep(options, report) << "\n";
}

int run(const CalibrateOptions& options, const Streams& streams) {
  const OutputOptions outputs = checkedOutputs(options.outputs, options.inputs.views);
  const double tolerance =
      options.tolerance.empty()
          ? 0
          : static_cast<double>(parsePositive("--tolerance", options.tolerance));
  OutputFiles files;
  const CalibrationInputs inputs = readInputs(options.inputs, files, streams);
  if (options.solver == SolverChoice::kLibrary &&
      (inputs.views.size() > 1 || !options.lens.empty())) {
    failBadInput("--solver library takes one view and no lens");
  }
  const cv::Mat reportFrame = readReportFrame(outputs, inputs, streams.messages);
  Warnings warnings(streams.messages);
  const RobustRequest request = requestOf(options, inputs, warnings);
  warnOfPoints(inputs, options.solver, warnings);
  streams.progress << "solving with " << inputs.views[inputs.bedView].points.size() << " points ..."
                   << std::endl;
  const RobustCamera robust = solve(request, options.solver, warnings);
  warnOfWrongOnes(robust, request, warnings);
  const ChosenCamera chosen = chooseCamera(options.solver, robust, request, tolerance);
  const bool trusted = checkChosen(chosen, request, warnings);
  const std::optional<SeenShares> seen = seenOfBed(chosen, request);
  if (seen) {
    warnOfBed(*seen, warnings);
  }
  const std::vector<Remedy> remedies = remediesFor(robust, request, chosen.accuracy);
  const cv::Rect2d target = targetBox(chosen.result.points);
  const Verdict verdict =
      verdictOn(chosen.accuracy, std::hypot(target.width, target.height), tolerance, remedies);
  const bool usable = trusted && (verdict.good || tolerance == 0);
  const bool save = usable || options.force;

  const CalibrationReport report{.request = request,
                                 .robust = robust,
                                 .chosen = chosen,
                                 .remedies = remedies,
                                 .verdict = verdict,
                                 .tolerance = tolerance,
                                 .seen = seen,
                                 .warnings = warnings.texts()};
  streams.out << describeResult(chosen.result, streams.verbose) << std::flush;
  stageReports(files, outputs, inputs, report, {.trusted = trusted, .saved = save}, reportFrame);
  if (save) {
    stageCamera(files, outputs.camera, chosen.result.param, notesOf(report));
  }
  files.commit();
  reportOutcome(options, outputs, report, trusted, save, streams);
  return usable ? kExitOk : kExitJobFailed;
}

}  // namespace

Command addCalibrateCommand(CLI::App& app) {
  const auto options = std::make_shared<CalibrateOptions>();
  CLI::App* command = addCommand(app, "calibrate", "Calibrate the camera from views of a target");
  addInputOptions(*command, options->inputs);
  addOutputOptions(*command, options->outputs);
  addPictureOptions(*command, options->picture);
  addOption(*command, "--tolerance", options->tolerance,
            "largest error on the bed; beyond it nothing is written and the exit code is 1")
      .typeName("MM");
  addChoice(
      *command, "--solver",
      {{"auto", static_cast<int>(SolverChoice::kAuto)},
       {"library", static_cast<int>(SolverChoice::kLibrary)},
       {"robust", static_cast<int>(SolverChoice::kRobust)}},
      [options](int solver) { options->solver = static_cast<SolverChoice>(solver); },
      "library: SingleCamCalibration; robust: also for difficult and several views; auto: "
      "the library's unless the robust one is clearly better")
      .typeName("auto|library|robust");
  addPath(*command, "--lens", options->lens,
          "keep the lens of this camera file and measure only where the bed is")
      .typeName("INI");
  addFlag(*command, "--keep-all", options->keepAll,
          "use points and views that contradict the others, too");
  addFlag(*command, "--force", options->force, "write the camera even if it is not to be trusted");
  setFooter(
      *command,
      "Examples:\n"
      "  fisheye-calibration calibrate points.csv --image-size 1920x1208 -o camera.ini\n"
      "  fisheye-calibration calibrate photo.png --chessboard 8x6 --spacing 39 -o camera.ini\n"
      "  fisheye-calibration calibrate bed.png tilted1.png tilted2.png --chessboard 8x6 --spacing "
      "39 --tolerance 0.5 -o camera.ini\n"
      "  fisheye-calibration calibrate photo.png --chessboard 8x6 --spacing 39 --bed 0,0,400x300 "
      "--resolution 0.25 -o camera.ini");
  return {command, [options](const Streams& streams) { return run(*options, streams); }};
}

}  // namespace fisheye_calibration::program
