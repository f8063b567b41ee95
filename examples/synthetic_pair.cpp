// Two cameras whose parameters are known exactly, side by side over one bed, each of which sees a
// part of it.
//   synthetic-pair points SIDE POINTS.csv     the points that the camera sees, with noise; a point
//                                             has the same number for both
//   synthetic-pair frame SIDE PICTURE.pgm     its picture of the bed, tiled like a chessboard
//   synthetic-pair size                       image size of either camera, WIDTHxHEIGHT
//   synthetic-pair compare SIDE CAMERA.ini    truth and result; exit code 1 if they are far apart
// SIDE is left or right.
#include "synthetic_main.h"

namespace {

constexpr Bed kBed = {.columns = 21, .rows = 9, .spacing = 50};  // 1000 mm x 400 mm

KnownCamera knownCamera(const FishEyeCalibrationParam& param, unsigned seed) {
  // A point farther from the image's centre than half its width makes the solver diverge.
  return {.param = param, .width = 1280, .height = 960, .reach = 600, .seed = seed};
}

KnownCamera leftCamera() {
  const FishEyeCalibrationParam lens = {
      .u0 = 646.5f, .v0 = 474.0f, .fx = 560.0f, .fy = 559.0f, .k0 = 0.012, .k1 = -0.05};
  return knownCamera(mounted(lens, 320, 205, 230, {-0.09f, 0.10f, 0.03f}), 20240229);
}

KnownCamera rightCamera() {
  const FishEyeCalibrationParam lens = {
      .u0 = 633.0f, .v0 = 484.5f, .fx = 563.0f, .fy = 562.0f, .k0 = 0.01, .k1 = -0.055};
  return knownCamera(mounted(lens, 680, 195, 240, {0.07f, -0.12f, -0.04f}), 20240301);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  return runExample({.name = "synthetic-pair",
                     .usage = "points SIDE CSV | frame SIDE PGM | size | compare SIDE INI",
                     .bed = kBed,
                     .cameras = {{"left", "Synthetic left camera", leftCamera()},
                                 {"right", "Synthetic right camera", rightCamera()}}},
                    argumentCount, arguments);
}
