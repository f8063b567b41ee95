// Throws the image library's assertion error.
#pragma once

#include <opencv2/core.hpp>

namespace fisheye_calibration::lens {

// Throws cv::Exception with code -215, `text` as the failed condition and `function` as the
// function's name, unless `condition` holds (compatibility 20). File and line are the caller's.
inline void require(bool condition, const char* text, const char* function,
                    const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
  if (!condition) {
    cv::error(cv::Error::StsAssert, text, function, file, line);
  }
}

}  // namespace fisheye_calibration::lens
