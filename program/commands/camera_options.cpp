// The commands around points and a camera's record.
#include <CLI/CLI.hpp>

#include "commands/command_options.h"

namespace fisheye_calibration::program {
namespace {

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

}  // namespace

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

}  // namespace fisheye_calibration::program
