// The command line of fisheye-calibration: options in, exit code out. The work is in the commands.
#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <new>
#include <opencv2/core.hpp>
#include <opencv2/core/utils/logger.hpp>
#include <string>

#include "base/failure.h"
#include "base/text.h"
#include "commands/command_options.h"
#include "commands/info_command.h"

namespace fisheye_calibration::program {
namespace {

constexpr const char* kProgramName = "fisheye-calibration";

constexpr const char* kExitCodes =
    "Exit codes: 0 done; 1 the job failed or its result is not to be trusted; 2 bad usage or "
    "input.";

// Failures come back as exceptions with the text; the image library's own lines would be noise.
int silent(int, const char*, const char*, const char*, int, void*) { return 0; }

int report(const std::string& message, int code) {
  std::cerr << kProgramName << ": " << onOneLine(message) << std::endl;
  return code;
}

int run(int argc, char** argv) {
  CLI::App app("Calibrates fisheye cameras over a work bed and converts points with them.");
  app.name(kProgramName);
  app.set_version_flag("--version", std::string(kProgramName) + " " + FISHEYE_CALIBRATION_VERSION);
  app.require_subcommand(1);
  app.footer(std::string("Examples:\n"
                         "  fisheye-calibration detect photo.png --chessboard 8x6 --spacing 39 "
                         "-o points.csv\n"
                         "  fisheye-calibration calibrate points.csv --image-size 1920x1208 "
                         "-o camera.ini\n"
                         "  fisheye-calibration map --camera camera.ini --from world --to raw 120 "
                         "-80.5\n"
                         "  fisheye-calibration correct --camera camera.ini frame.png -o top.png "
                         "--grid 50\n"
                         "  fisheye-calibration crop top.png --size 1200x800 -o bed.png\n"
                         "  fisheye-calibration stitch --left l.png,l.ini,l.csv --right "
                         "r.png,r.ini,r.csv -o bed.png --dual dual.ini\n"
                         "  fisheye-calibration info camera.ini\n\n") +
             kExitCodes);
  DetectOptions detect;
  CalibrateOptions calibrate;
  CorrectOptions correct;
  CropOptions crop;
  StitchOptions stitch;
  MapOptions map;
  HandEyeOptions handEye;
  StraightenOptions straighten;
  std::string camera;
  addDetect(app, detect);
  addCalibrate(app, calibrate);
  addCorrect(app, correct);
  addCrop(app, crop);
  addStitch(app, stitch);
  addMap(app, map);
  addHandEye(app, handEye);
  addStraighten(app, straighten);
  addInfo(app, camera);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
      return app.exit(error);  // --help, --version
    }
    return report(std::string(error.what()) + " (--help shows the usage)", kExitBadInput);
  }
  if (app.got_subcommand("detect")) {
    return runDetect(detect, std::cout, std::cerr);
  }
  if (app.got_subcommand("calibrate")) {
    return runCalibrate(calibrate, std::cout, std::cerr);
  }
  if (app.got_subcommand("correct")) {
    return runCorrect(correct, std::cout, std::cerr);
  }
  if (app.got_subcommand("crop")) {
    return runCrop(crop, std::cout, std::cerr);
  }
  if (app.got_subcommand("stitch")) {
    return runStitch(stitch, std::cout, std::cerr);
  }
  if (app.got_subcommand("map")) {
    return runMap(map, std::cin, std::cout, std::cerr);
  }
  if (app.got_subcommand("hand-eye")) {
    return runHandEye(handEye, std::cout);
  }
  if (app.got_subcommand("straighten")) {
    return runStraighten(straighten, std::cout, std::cerr);
  }
  return runInfo(camera, std::cout, std::cerr);
}

// The exit code, with what ended the command early written as one line.
int runReporting(int argc, char** argv) {
  cv::redirectError(silent);
  cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
  try {
    const int code = run(argc, argv);
    std::cout.flush();
    return std::cout ? code : report("standard output: cannot write", kExitJobFailed);
  } catch (const Failure& failure) {
    // It names the file or the option itself; file:line:column stands at the line's start, where
    // editors look for it.
    std::cerr << onOneLine(failure.what()) << std::endl;
    return failure.code();
  } catch (const std::bad_alloc&) {
    return report("not enough memory", kExitJobFailed);
  } catch (const std::exception& failure) {
    return report(failure.what(), kExitJobFailed);
  }
}

}  // namespace
}  // namespace fisheye_calibration::program

int main(int argc, char** argv) { return fisheye_calibration::program::runReporting(argc, argv); }
