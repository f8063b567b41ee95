// Values of the options of `stitch`. Failures name the option and the text.
#pragma once

#include <filesystem>
#include <string>

#include "geometry/stitched_canvas.h"

namespace fisheye_calibration::program {

// The files of one camera.
struct CameraFiles {
  std::filesystem::path frame;
  std::filesystem::path camera;
  std::filesystem::path points;
};

// "frame.png,camera.ini,points.csv"
CameraFiles parseFiles(const std::string& option, const std::string& text);

// "400,300,3000x1600": left column, top row and size.
Crop parseCrop(const std::string& text);

}  // namespace fisheye_calibration::program
