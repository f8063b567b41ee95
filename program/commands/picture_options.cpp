// The commands that make pictures.
#include <CLI/CLI.hpp>

#include "commands/command_options.h"

namespace fisheye_calibration::program {

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
  command->add_option("--grid", options.grid, "draw the bed's lines at multiples of this distance")
      ->type_name("MM");
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

}  // namespace fisheye_calibration::program
