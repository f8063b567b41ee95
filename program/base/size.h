// The size of a picture, pixels.
#pragma once

#include <string>

namespace fisheye_calibration::program {

// The longest side of a picture that the program accepts.
constexpr int kLargestImageSide = 32767;

struct Size {
  int width = 0;
  int height = 0;

  bool operator==(const Size&) const = default;
};

// "1920x1080"
inline std::string sizeText(const Size& size) {
  return std::to_string(size.width) + "x" + std::to_string(size.height);
}

}  // namespace fisheye_calibration::program
