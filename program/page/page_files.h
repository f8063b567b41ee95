// The files of the guided page, compiled into the program.
#pragma once

#include <string_view>

namespace fisheye_calibration::program {

// The bytes of the file of that name, without a folder; nothing if there is none.
std::string_view pageFile(std::string_view name);

}  // namespace fisheye_calibration::program
