#include "commands/verify_command.h"

#include <memory>
#include <ostream>
#include <string>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "calibration/bed_motion.h"
#include "checks/checked_camera.h"
#include "checks/finding.h"
#include "commands/calibration_inputs.h"
#include "commands/declared_options.h"
#include "commands/option_values.h"
#include "files/camera_notes.h"

namespace fisheye_calibration::program {
namespace {

struct VerifyOptions {
  InputOptions input;
  std::filesystem::path camera;
  std::string tolerance;  // empty: the bound inside the target that the camera file notes
};

double toleranceOf(const VerifyOptions& options) {
  if (!options.tolerance.empty()) {
    return static_cast<double>(parsePositive("--tolerance", options.tolerance));
  }
  const auto noted = loadNotes(options.camera).insideTarget;
  if (!noted) {
    failBadInput("--tolerance is missing: " + nameOf(options.camera) +
                 " does not say how accurate it is");
  }
  return *noted;
}

int run(const VerifyOptions& options, const Streams& streams) {
  const FishEyeCalibrationParam record =
      loadCheckedCamera(options.camera, false, streams.messages).param;
  const double tolerance = toleranceOf(options);
  OutputFiles files;
  const CalibrationInputs input = readInputs(options.input, files, streams);
  if (input.views.size() != 1) {
    failBadInput("verify takes one photo or list of points");
  }
  const BedMotion motion = motionSince(record, input.views.front(), input.image);
  files.commit();
  if (!motion.wrongIds.empty()) {
    streams.messages << "warning: " << namedPoints(motion.wrongIds)
                     << (motion.wrongIds.size() == 1 ? " contradicts" : " contradict")
                     << " the other points (left out)\n";
  }
  const bool good = motion.largest <= tolerance;
  streams.out << "off by at most " << roundedToTwo(motion.largest) << " mm\n"
              << "moved by " << roundedToTwo(motion.shift) << " mm, turned by "
              << roundedToTwo(motion.turnDegrees) << "\u00b0; "
              << (good ? "still within " + roundedToTwo(tolerance) + " mm" : "re-calibrate")
              << "\n";
  return good ? kExitOk : kExitJobFailed;
}

}  // namespace

Command addVerifyCommand(CLI::App& app) {
  const auto options = std::make_shared<VerifyOptions>();
  CLI::App* command =
      addCommand(app, "verify", "Check with one photo whether a camera file is still true");
  addInputOptions(*command, options->input);
  addPath(*command, "--camera", options->camera, "the camera's parameter file")
      .typeName("INI")
      .required();
  addOption(*command, "--tolerance", options->tolerance,
            "largest error on the bed (default: the file's own inside the target)")
      .typeName("MM");
  setFooter(
      *command,
      "The target must lie where its world coordinates say.\n"
      "Example:\n"
      "  fisheye-calibration verify photo.png --camera camera.ini --chessboard 8x6 --spacing 39 "
      "--tolerance 0.5");
  return {command, [options](const Streams& streams) { return run(*options, streams); }};
}

}  // namespace fisheye_calibration::program
