// Values of command-line options. Failures name the option and the text.
#pragma once

#include <opencv2/core/types.hpp>
#include <string>

#include "base/size.h"

namespace fisheye_calibration::program {

// "1920x1208"; both from `smallest` to `largest`.
Size parseSize(const std::string& option, const std::string& text, int smallest, int largest);

// The size of a picture.
Size parseImageSize(const std::string& option, const std::string& text);

struct Pair {
  float first = 0;
  float second = 0;
};

// "39,-12.5"
Pair parsePair(const std::string& option, const std::string& text);

// "0,-10,400x300.5": the corner with the least X and Y, the width and the height. The sides are at
// least 0.001.
cv::Rect2d parseArea(const std::string& option, const std::string& text);

double parsePositiveNumber(const std::string& option, const std::string& text);

// As parsePositiveNumber, and within the range of a 32-bit float.
float parsePositive(const std::string& option, const std::string& text);

}  // namespace fisheye_calibration::program
