// Pictures within a page.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <string_view>

namespace fisheye_calibration::program {

// RFC 4648, with padding.
std::string base64(std::string_view bytes);

// "data:image/jpeg;base64,..." of a grey or colour picture; reduced first if a side is longer than
// `longestSide`.
std::string jpegData(const cv::Mat& picture, int longestSide);

// "data:image/png;base64,..."
std::string pngData(const cv::Mat& picture);

}  // namespace fisheye_calibration::program
