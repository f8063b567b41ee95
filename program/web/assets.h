// The style sheets, scripts and pages of this folder, which are compiled into the program.
#pragma once

#include <string_view>

namespace fisheye_calibration::program {

// The contents of a file by its name, for example "theme.css"; empty if there is no such file.
// cmake/EmbedFiles.cmake writes the function from the list in program/CMakeLists.txt.
std::string_view webAsset(std::string_view name);

}  // namespace fisheye_calibration::program
