// Raises the image library's assertion error.
#pragma once

#include <opencv2/core.hpp>
#include <source_location>

namespace fisheye {

// Raises cv::Exception with code -215, `text` as the failed condition and `function` as the
// function's name, unless `condition` holds.
inline void require(bool condition, const char* text, const char* function,
                    const std::source_location& where = std::source_location::current()) {
  if (!condition) {
    cv::error(cv::Error::StsAssert, text, function, where.file_name(),
              static_cast<int>(where.line()));
  }
}

}  // namespace fisheye
