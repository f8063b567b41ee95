// Values of command-line options, read so that a complaint names the option and the text.
#pragma once

#include <string>

#include "base/size.h"

namespace fisheye_calibration::program {

// "1920x1208"; both from 1 to `largest`.
Size parseSize(const std::string& option, const std::string& text, int smallest, int largest);

struct Pair {
  float first = 0;
  float second = 0;
};

// "39,-12.5"
Pair parsePair(const std::string& option, const std::string& text);

float parsePositive(const std::string& option, const std::string& text);

}  // namespace fisheye_calibration::program
