// Two cameras that are known exactly, side by side over one bed, each of which sees a part of it.
//   synthetic-pair points SIDE POINTS.csv     the points that the camera sees, with noise; a point
//                                             has the same number for both
//   synthetic-pair frame SIDE PICTURE.pgm     its picture of the bed, tiled like a chessboard
//   synthetic-pair size                       image size of either, WIDTHxHEIGHT
//   synthetic-pair compare SIDE CAMERA.ini    truth beside result; exit code 1 if they are far
//   apart
// SIDE is left or right.
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "synthetic_bed.h"

namespace {

constexpr Bed kBed = {21, 9, 50};  // 1000 mm x 400 mm

constexpr int kImageWidth = 1280;
constexpr int kImageHeight = 960;
// A point farther than half the image's width from its centre makes the solver diverge.
constexpr double kReach = 600;

KnownCamera leftCamera() {
  FishEyeCalibrationParam param = FishEyeCalibrationParam();
  param.u0 = 646.5f;
  param.v0 = 474.0f;
  param.fx = 560.0f;
  param.fy = 559.0f;
  param.k0 = 0.012;
  param.k1 = -0.05;
  mount(param, 320, 205, 230, -0.09f, 0.10f, 0.03f);
  return {param, kImageWidth, kImageHeight, kReach, 20240229};
}

KnownCamera rightCamera() {
  FishEyeCalibrationParam param = FishEyeCalibrationParam();
  param.u0 = 633.0f;
  param.v0 = 484.5f;
  param.fx = 563.0f;
  param.fy = 562.0f;
  param.k0 = 0.01;
  param.k1 = -0.055;
  mount(param, 680, 195, 240, 0.07f, -0.12f, -0.04f);
  return {param, kImageWidth, kImageHeight, kReach, 20240301};
}

int usage() {
  std::cerr << "usage: synthetic-pair points SIDE CSV | frame SIDE PGM | size | compare SIDE INI\n";
  return 2;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const std::vector<std::string> words(arguments + 1, arguments + argumentCount);
  if (words.size() == 1 && words[0] == "size") {
    std::cout << kImageWidth << "x" << kImageHeight << "\n";
    return 0;
  }
  if (words.size() != 3 || (words[1] != "left" && words[1] != "right")) {
    return usage();
  }
  const KnownCamera camera = words[1] == "left" ? leftCamera() : rightCamera();
  if (words[0] == "compare") {
    std::printf("Synthetic %s camera, noise %.2f px in x and y\n", words[1].c_str(), kNoise);
    return compare(words[2], camera, kBed) ? 0 : 1;
  }
  bool written = false;
  if (words[0] == "points") {
    written = writePoints(words[2], camera, kBed);
  } else if (words[0] == "frame") {
    written = writeFrame(words[2], camera, kBed);
  } else {
    return usage();
  }
  if (!written) {
    std::cerr << "synthetic-pair: cannot write " << words[2] << "\n";
  }
  return written ? 0 : 1;
}
