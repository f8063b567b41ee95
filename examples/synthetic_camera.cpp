// A camera that is known exactly, over a bed: writes the points that it sees, and compares what a
// calibration made of them with the truth.
//   synthetic-camera points POINTS.csv     the points, with noise
//   synthetic-camera frame PICTURE.pgm     its picture of the bed, tiled like a chessboard
//   synthetic-camera size                  its image size, WIDTHxHEIGHT
//   synthetic-camera compare CAMERA.ini    truth beside result; exit code 1 if they are far apart
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "synthetic_bed.h"

namespace {

constexpr Bed kBed = {13, 9, 50};

// Mounted 161 mm over a 600 mm x 400 mm bed, off its middle by 114 mm and tilted back by 17
// degrees.
KnownCamera knownCamera() {
  FishEyeCalibrationParam param = FishEyeCalibrationParam();
  param.u0 = 968.5f;
  param.v0 = 533.25f;
  param.fx = 640.0f;
  param.fy = 638.0f;
  param.k0 = 0.015;
  param.k1 = -0.06;
  param.Rx = -0.3f;
  param.Ry = 0.05f;
  param.Rz = 0.02f;
  param.Tx = -300.0f;
  param.Ty = -255.0f;
  param.Tz = 262.0f;
  return {param, 1920, 1080, 960, 20240229};
}

int usage() {
  std::cerr << "usage: synthetic-camera points CSV | frame PGM | size | compare INI\n";
  return 2;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const std::vector<std::string> words(arguments + 1, arguments + argumentCount);
  if (words.empty()) {
    return usage();
  }
  const KnownCamera camera = knownCamera();
  if (words.size() == 1 && words[0] == "size") {
    std::cout << camera.width << "x" << camera.height << "\n";
    return 0;
  }
  if (words.size() != 2) {
    return usage();
  }
  if (words[0] == "compare") {
    std::printf("Synthetic camera, %d points, noise %.2f px in x and y\n", kBed.columns * kBed.rows,
                kNoise);
    return compare(words[1], camera, kBed) ? 0 : 1;
  }
  bool written = false;
  if (words[0] == "points") {
    written = writePoints(words[1], camera, kBed);
  } else if (words[0] == "frame") {
    written = writeFrame(words[1], camera, kBed);
  } else {
    return usage();
  }
  if (!written) {
    std::cerr << "synthetic-camera: cannot write " << words[1] << "\n";
  }
  return written ? 0 : 1;
}
