// The command line of fisheye-calibration: options in, exit code out. The work is in the commands.
#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <new>
#include <opencv2/core.hpp>
#include <opencv2/core/utils/logger.hpp>
#include <string>

#include "calibrate_command.h"
#include "correct_command.h"
#include "crop_command.h"
#include "detect_command.h"
#include "failure.h"
#include "hand_eye_command.h"
#include "info_command.h"
#include "map_command.h"
#include "stitch_command.h"
#include "straighten_command.h"
#include "text.h"

namespace {

using host::CalibrateOptions;
using host::CorrectOptions;
using host::CropOptions;
using host::DetectOptions;
using host::HandEyeOptions;
using host::MapOptions;
using host::StitchOptions;
using host::StraightenOptions;
using host::TargetOptions;

constexpr const char* programName = "fisheye-calibration";

constexpr const char* exitCodes =
    "Exit codes: 0 done; 1 the job failed or its result is not to be trusted; 2 bad usage or "
    "input.";

void addTargetOptions(CLI::App& command, TargetOptions& target) {
  command.add_option("--chessboard", target.chessboard, "inner corners of the chessboard")
      ->type_name("COLUMNSxROWS");
  command.add_option("--circles", target.circles, "circles of the grid")->type_name("COLUMNSxROWS");
  command.add_flag("--asymmetric", target.asymmetric,
                   "every second row of circles is shifted by half a step");
  command
      .add_option("--spacing", target.spacing,
                  "distance of neighbouring corners or circles, world units; with --asymmetric the "
                  "distance of the rows (half that of the circles in a row)")
      ->type_name("MM");
  command.add_option("--origin", target.origin, "world position of the first point (top left)")
      ->type_name("X,Y")
      ->capture_default_str();
  command.add_option("--first-id", target.firstId, "PointId of the first point")
      ->type_name("N")
      ->capture_default_str();
  command.add_option("--overlay", target.overlay, "write the picture with the numbered points")
      ->type_name("PICTURE");
}

void addDetect(CLI::App& app, DetectOptions& options) {
  CLI::App* command = app.add_subcommand(
      "detect", "Find the target in a picture and write its numbered points as CSV");
  command->add_option("image", options.image, "picture of the target")->required();
  addTargetOptions(*command, options.target);
  command->add_option("-o,--output", options.output, "the points: PointId,Xw,Yw,ImagePtX,ImagePtY")
      ->type_name("CSV")
      ->required();
  command->footer(
      "Points are numbered row by row; +Xw runs right and +Yw down in the picture.\n\nExample:\n"
      "  fisheye-calibration detect photo.png --chessboard 8x6 --spacing 39 -o points.csv "
      "--overlay found.png");
}

void addCalibrate(CLI::App& app, CalibrateOptions& options) {
  CLI::App* command =
      app.add_subcommand("calibrate", "Calibrate the camera from points, or from a picture");
  command->add_option("input", options.input, "points (CSV), or a picture of the target")
      ->required();
  command
      ->add_option("--image-size", options.imageSize,
                   "size of the camera's picture; needed with points")
      ->type_name("WxH");
  command
      ->add_option("--corrected-size", options.correctedSize,
                   "size of the corrected picture (default: the image size)")
      ->type_name("WxH");
  command->add_option("-o,--output", options.output, "the camera's parameter file")
      ->type_name("INI")
      ->required();
  command
      ->add_option("--residual-plot", options.residualPlot,
                   "picture of the residuals (default: residuals.png beside the output)")
      ->type_name("PICTURE");
  command
      ->add_option("--residual-table", options.residualTable,
                   "the residuals (default: residuals.csv beside the output)")
      ->type_name("CSV");
  command->add_flag("--force", options.force, "write the camera even if it is not to be trusted");
  addTargetOptions(*command, options.target);
  command->footer(
      "Examples:\n"
      "  fisheye-calibration calibrate points.csv --image-size 1920x1208 -o camera.ini\n"
      "  fisheye-calibration calibrate photo.png --chessboard 8x6 --spacing 39 -o camera.ini");
}

void addCorrect(CLI::App& app, CorrectOptions& options) {
  CLI::App* command =
      app.add_subcommand("correct", "Render frames as seen from straight above the bed");
  command->add_option("--camera", options.camera, "the camera's parameter file")
      ->type_name("INI")
      ->required();
  command->add_option("frames", options.frames, "pictures of the camera, or a folder of them")
      ->type_name("FRAME")
      ->required();
  command
      ->add_option("-o,--output", options.output,
                   "the corrected picture; a folder for several frames (made if it is missing)")
      ->type_name("PATH")
      ->required();
  command
      ->add_option("--size", options.size,
                   "size of the corrected picture: the camera's --corrected-size (default: the "
                   "frame's size)")
      ->type_name("WxH");
  command
      ->add_option("--mask", options.mask,
                   "write where the picture has content (0) and where not (255); it is the same "
                   "for all frames")
      ->type_name("PICTURE");
  command->add_option("--grid", options.grid, "draw the bed's lines at multiples of this distance")
      ->type_name("MM");
  command->footer(
      "Grey frames give grey pictures, colour frames give colour.\n\nExamples:\n"
      "  fisheye-calibration correct --camera camera.ini frame.png -o top.png --grid 50\n"
      "  fisheye-calibration correct --camera camera.ini frames -o corrected --mask mask.png");
}

void addCrop(CLI::App& app, CropOptions& options) {
  CLI::App* command = app.add_subcommand("crop", "Cut the centre out of a picture");
  command->add_option("image", options.image, "the picture")->required();
  command->add_option("--size", options.size, "size of what is kept")->type_name("WxH")->required();
  command->add_option("-o,--output", options.output, "the cut picture")
      ->type_name("PICTURE")
      ->required();
  command->footer("Example:\n  fisheye-calibration crop top.png --size 1200x800 -o bed.png");
}

void addStitch(CLI::App& app, StitchOptions& options) {
  CLI::App* command =
      app.add_subcommand("stitch", "Join the frames of two cameras over one bed in one picture");
  command
      ->add_option("--left", options.left,
                   "the first camera: its frame, parameter file and measured points")
      ->type_name("FRAME,INI,CSV")
      ->required();
  command->add_option("--right", options.right, "the second camera, which sees what lies right")
      ->type_name("FRAME,INI,CSV")
      ->required();
  command->add_option("-o,--output", options.output, "the stitched picture")
      ->type_name("PICTURE")
      ->required();
  command->add_option("--dual", options.dual, "the stitched picture's parameter file")
      ->type_name("INI")
      ->required();
  command
      ->add_option("--crop", options.crop,
                   "keep only this part, by its left column, top row and size (multiples of 4)")
      ->type_name("X,Y,WxH");
  command
      ->add_option("--seam", options.seam,
                   "write the picture with the blended strip and the shared points")
      ->type_name("PICTURE");
  command->footer(
      "Points with the same PointId in both lists are the same point of the bed; at least four of "
      "them, well spread, align the views. Calibrate both cameras in one world with coordinates "
      "within 0 ... 10000 and a --corrected-size of twice the frame's size.\n\nExample:\n"
      "  fisheye-calibration stitch --left l.png,l.ini,l.csv --right r.png,r.ini,r.csv "
      "-o bed.png --dual dual.ini --seam seam.png");
}

void addMap(CLI::App& app, MapOptions& options) {
  CLI::App* command = app.add_subcommand(
      "map", "Carry points between the frames of a camera or a stitched picture");
  command->add_option("--camera", options.camera, "the camera's parameter file")->type_name("INI");
  command
      ->add_option("--dual", options.dual,
                   "instead of it, the parameter file of a stitched picture")
      ->type_name("INI");
  command->add_option("--from", options.from, "world, second or stitched")
      ->type_name("FRAME")
      ->required();
  command->add_option("--to", options.to, "raw, corrected, second, stitched or world")
      ->type_name("FRAME")
      ->required();
  command
      ->add_option("--corrected-size", options.correctedSize,
                   "size of the corrected picture; not needed for world to raw")
      ->type_name("WxH");
  command
      ->add_option("point", options.point,
                   "Xw Yw [Zw] in the world, or x y in a picture; without it, a CSV with a header "
                   "(Xw,Yw[,Zw] or x,y, PointId is kept) is read from standard input")
      ->type_name("NUMBER");
  command->footer(
      "The library converts world to raw, corrected and second, and second to world (on the bed); "
      "with --dual, world to stitched and back. Of a stitched picture y is the row from the top; "
      "for a crop a note tells what to add to it.\n"
      "\nExamples:\n"
      "  fisheye-calibration map --camera camera.ini --from world --to raw 120 -80.5\n"
      "  fisheye-calibration map --camera camera.ini --from second --to world "
      "--corrected-size 1920x1208 < pixels.csv\n"
      "  fisheye-calibration map --dual dual.ini --from stitched --to world 812 440");
}

void addInfo(CLI::App& app, std::string& path) {
  CLI::App* command =
      app.add_subcommand("info", "Show a camera's parameter file and what in it is impossible");
  command->add_option("camera", path, "the camera's parameter file")->required();
  command->footer("Example:\n  fisheye-calibration info camera.ini");
}

void addHandEye(CLI::App& app, HandEyeOptions& options) {
  CLI::App* command =
      app.add_subcommand("hand-eye", "Fit the affine map from raw-image pixels to the work plane");
  command->add_option("points", options.points, "points (CSV), at least three")->required();
  command->add_option("-o,--output", options.output, "the coefficients: a,b,c,d,e,f")
      ->type_name("CSV")
      ->required();
  command->add_option("--plot", options.plot, "picture of the residuals on the work plane")
      ->type_name("PICTURE");
  command->footer(
      "Xw = a x + b y + e, Yw = c x + d y + f. The lens's distortion is not taken into account.\n\n"
      "Example:\n  fisheye-calibration hand-eye points.csv -o affine.csv --plot residuals.png");
}

void addStraighten(CLI::App& app, StraightenOptions& options) {
  CLI::App* command = app.add_subcommand(
      "straighten", "Show a corrected picture straightened by four points, and keep the result");
  command
      ->add_option("points", options.points,
                   "four points (CSV) in the corrected picture; the first and the last lie on a "
                   "diagonal")
      ->required();
  command->add_option("image", options.image, "the corrected picture")->required();
  command->footer(
      "The library works on fixed files on drive D: (elsewhere than on Windows a folder named D: "
      "in the working directory, made if it is missing): the picture is copied to "
      "D:/CorrectedImage.bmp and the result is D:/CorrectedImage2.bmp. The window waits for a "
      "key.\n\nExample:\n  fisheye-calibration straighten corners.csv corrected.png");
}

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
