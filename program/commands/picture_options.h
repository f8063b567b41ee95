// What the corrected picture shows, on the command line of `calibrate`.
#pragma once

#include <string>

#include "calibration/picture_choice.h"

namespace CLI {
class App;
}

namespace fisheye_calibration::program {

// As given on the command line; empty: chosen.
struct PictureOptions {
  std::string correctedSize;  // "1920x1208"
  std::string bed;            // "X,Y,WIDTHxHEIGHT", world units
  std::string resolution;     // of the bed, world units per pixel
};

void addPictureOptions(CLI::App& command, PictureOptions& options);

// Fails as bad input if the options exclude each other or are no numbers.
PictureWish pictureOf(const PictureOptions& options);

}  // namespace fisheye_calibration::program
