// A camera over a bed whose parameters are known exactly: writes the points that it sees, and
// compares what a calibration made of them with the truth.
//   synthetic-camera points POINTS.csv     the points, with noise
//   synthetic-camera frame PICTURE.pgm     its picture of the bed, tiled like a chessboard
//   synthetic-camera size                  its image size, WIDTHxHEIGHT
//   synthetic-camera compare CAMERA.ini    truth and result; exit code 1 if they are far apart
#include <string>

#include "synthetic_main.h"

namespace {

constexpr Bed kBed = {.columns = 13, .rows = 9, .spacing = 50};

// 161 mm above a bed of 600 mm x 400 mm, 114 mm off its middle and tilted back by 17 degrees.
constexpr FishEyeCalibrationParam kCamera = {.u0 = 968.5f,
                                             .v0 = 533.25f,
                                             .fx = 640.0f,
                                             .fy = 638.0f,
                                             .k0 = 0.015,
                                             .k1 = -0.06,
                                             .Rx = -0.3f,
                                             .Ry = 0.05f,
                                             .Rz = 0.02f,
                                             .Tx = -300.0f,
                                             .Ty = -255.0f,
                                             .Tz = 262.0f};

}  // namespace

int main(int argumentCount, char** arguments) {
  const KnownCamera camera = {
      .param = kCamera, .width = 1920, .height = 1080, .reach = 960, .seed = 20240229};
  const std::string count = std::to_string(kBed.columns * kBed.rows);
  return runExample({.name = "synthetic-camera",
                     .usage = "points CSV | frame PGM | size | compare INI",
                     .bed = kBed,
                     .cameras = {{"", "Synthetic camera, " + count + " points", camera}}},
                    argumentCount, arguments);
}
