// The outermost structure of ISO base media files (ISO/IEC 14496-12), such as .mp4 and .mov.
#pragma once

#include <filesystem>

namespace fisheye_calibration::program {

// True if the file consists of whole boxes: what its boxes say of their sizes ends where the file
// ends. A file that has been cut off lacks a part of its last box. False for other files.
bool holdsWholeBoxes(const std::filesystem::path& path);

}  // namespace fisheye_calibration::program
