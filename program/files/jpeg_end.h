// Whether bytes are a JPEG file, and all of it.
#pragma once

#include <string_view>

namespace fisheye_calibration::program {

// True if the bytes begin as a JPEG file does.
bool isJpeg(std::string_view bytes);

// True if the bytes begin as a JPEG file does and end before its end-of-image marker. The image
// library decodes such a file without a word and leaves the rest of the picture grey.
bool isTruncatedJpeg(std::string_view bytes);

}  // namespace fisheye_calibration::program
