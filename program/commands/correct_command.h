// correct: renders the view from above of one or many frames.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace fisheye_calibration::program {

struct CorrectOptions {
  std::string camera;
  std::vector<std::string> frames;  // pictures, or one folder of them
  std::string output;               // a picture; a folder for many frames
  std::string size;
  std::string mask;
  std::string grid;
};

int runCorrect(const CorrectOptions& options, std::ostream& out, std::ostream& messages);

}  // namespace fisheye_calibration::program
