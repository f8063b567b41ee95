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

namespace {

constexpr const char* programName = "fisheye-calibration";

constexpr const char* exitCodes =
    "Exit codes: 0 done; 1 the job failed or its result is not to be trusted; 2 bad usage or "
    "input.";

// Failures come back as exceptions with the text; the image library's own lines would be noise.
int silent(int, const char*, const char*, const char*, int, void*) { return 0; }

int report(const std::string& message, int code) {
  std::cerr << programName << ": " << host::onOneLine(message) << std::endl;
  return code;
}

int run(int argc, char** argv) {
  CLI::App app("Calibrates fisheye cameras over a work bed and converts points with them.");
  app.name(programName);
  app.set_version_flag("--version", std::string(programName) + " " + FISHEYE_CALIBRATION_VERSION);
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
             exitCodes);
  host::DetectOptions detect;
  host::CalibrateOptions calibrate;
  host::CorrectOptions correct;
  host::CropOptions crop;
  host::StitchOptions stitch;
  host::MapOptions map;
  host::HandEyeOptions handEye;
  host::StraightenOptions straighten;
  std::string camera;
  host::addDetect(app, detect);
  host::addCalibrate(app, calibrate);
  host::addCorrect(app, correct);
  host::addCrop(app, crop);
  host::addStitch(app, stitch);
  host::addMap(app, map);
  host::addHandEye(app, handEye);
  host::addStraighten(app, straighten);
  host::addInfo(app, camera);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);  // --help, --version
    return report(std::string(error.what()) + " (--help shows the usage)", host::exitBadInput);
  }
  if (app.got_subcommand("detect")) return host::runDetect(detect, std::cout, std::cerr);
  if (app.got_subcommand("calibrate")) return host::runCalibrate(calibrate, std::cout, std::cerr);
  if (app.got_subcommand("correct")) return host::runCorrect(correct, std::cout, std::cerr);
  if (app.got_subcommand("crop")) return host::runCrop(crop, std::cout, std::cerr);
  if (app.got_subcommand("stitch")) return host::runStitch(stitch, std::cout, std::cerr);
  if (app.got_subcommand("map")) return host::runMap(map, std::cin, std::cout, std::cerr);
  if (app.got_subcommand("hand-eye")) return host::runHandEye(handEye, std::cout);
  if (app.got_subcommand("straighten")) {
    return host::runStraighten(straighten, std::cout, std::cerr);
  }
  return host::runInfo(camera, std::cout, std::cerr);
}

}  // namespace

int main(int argc, char** argv) {
  cv::redirectError(silent);
  cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
  try {
    const int code = run(argc, argv);
    std::cout.flush();
    return std::cout ? code : report("standard output: cannot write", host::exitJobFailed);
  } catch (const host::Failure& failure) {
    // It names the file or the option itself; file:line:column stands at the line's start, where
    // editors look for it.
    std::cerr << host::onOneLine(failure.what()) << std::endl;
    return failure.code();
  } catch (const std::bad_alloc&) {
    return report("not enough memory", host::exitJobFailed);
  } catch (const std::exception& failure) {
    return report(failure.what(), host::exitJobFailed);
  }
}
