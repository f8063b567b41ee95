#include "commands/stitch_values.h"

#include <cstddef>
#include <string_view>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "commands/option_values.h"

namespace fisheye_calibration::program {

CameraFiles parseFiles(const std::string& option, const std::string& text) {
  const std::size_t first = text.find(',');
  const std::size_t second = first == std::string::npos ? first : text.find(',', first + 1);
  if (second == std::string::npos || text.find(',', second + 1) != std::string::npos) {
    failBadInput(option + ": give three files as FRAME,CAMERA.INI,POINTS.CSV, not " +
                 inQuotes(text));
  }
  return {.frame = pathOf(text.substr(0, first)),
          .camera = pathOf(text.substr(first + 1, second - first - 1)),
          .points = pathOf(text.substr(second + 1))};
}

Crop parseCrop(const std::string& text) {
  const std::size_t first = text.find(',');
  const std::size_t second = first == std::string::npos ? first : text.find(',', first + 1);
  if (second != std::string::npos) {
    const auto left = parseInteger(std::string_view(text).substr(0, first));
    const auto top = parseInteger(std::string_view(text).substr(first + 1, second - first - 1));
    if (left && top && *left >= 0 && *top >= 0) {
      const Size size = parseImageSize("--crop", text.substr(second + 1));
      if (size.width % 4 != 0 || size.height % 4 != 0) {
        failBadInput("--crop: width and height must be multiples of 4, not " +
                     text.substr(second + 1));
      }
      return {.left = *left, .top = *top, .size = size};
    }
  }
  failBadInput("--crop: give left column, top row and size as X,Y,WIDTHxHEIGHT, not " +
               inQuotes(text));
}

}  // namespace fisheye_calibration::program
