// The conversions of points that the program provides, by the names of their frames.
#pragma once

#include <string>

namespace fisheye_calibration::program {

enum class ImageFrame { kWorld, kRaw, kCorrected, kSecond, kStitched };

struct Conversion {
  ImageFrame from;
  ImageFrame to;
  bool needsCorrectedSize;

  bool isOfStitched() const { return from == ImageFrame::kStitched || to == ImageFrame::kStitched; }
};

// The conversion between the two named frames. Fails as bad input for unknown names and for
// conversions that there are not.
Conversion findConversion(const std::string& from, const std::string& to);

}  // namespace fisheye_calibration::program
