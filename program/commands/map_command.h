// map: carries points between the frames of a calibrated camera or of a stitched picture, by the
// library's conversions.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace fisheye_calibration::program {

struct MapOptions {
  std::string camera;  // either this
  std::string dual;    // or the file of a stitched picture
  std::string from;
  std::string to;
  std::string correctedSize;
  std::vector<std::string> point;  // coordinates; empty: a CSV on `in`
};

enum class ImageFrame { kWorld, kRaw, kCorrected, kSecond, kStitched };

struct Conversion {
  ImageFrame from;
  ImageFrame to;
  bool needsCorrectedSize;
};

// The conversion between the two named frames. Fails as bad input for names that are none, and for
// conversions that the library does not provide.
Conversion findConversion(const std::string& from, const std::string& to);

int runMap(const MapOptions& options, std::istream& in, std::ostream& out, std::ostream& messages);

}  // namespace fisheye_calibration::program
