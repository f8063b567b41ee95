// Whether a JPEG file is all there.
#pragma once

#include <string_view>

namespace fisheye_calibration::program {

// True if the bytes begin as a JPEG file does and end before its end-of-image marker. The image
// library decodes such a file without a word and leaves the rest of the picture grey.
bool isTruncatedJpeg(std::string_view bytes);

}  // namespace fisheye_calibration::program
