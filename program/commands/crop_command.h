// crop: cuts the centred rectangle out of a picture.
#pragma once

#include <iosfwd>
#include <string>

namespace fisheye_calibration::program {

struct CropOptions {
  std::string image;
  std::string size;
  std::string output;
};

int runCrop(const CropOptions& options, std::ostream& out, std::ostream& messages);

}  // namespace fisheye_calibration::program
