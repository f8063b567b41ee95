// Pictures in and out.
#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace fisheye_calibration::program {

// True if the file's first bytes are those of a picture.
bool isPicture(const std::string& path);

// Eight-bit grey, as stored (no rotation by the camera's orientation tag: pixel coordinates must be
// those of the sensor). Fails as bad input.
cv::Mat readGreyPicture(const std::string& path);

// The same in colour (three channels).
cv::Mat readColourPicture(const std::string& path);

// Grey stays one channel, everything else gets three.
cv::Mat readFrame(const std::string& path);

// The bytes of a picture file of the kind that the path's ending names.
std::string encodePicture(const std::string& path, const cv::Mat& picture);

// Fails as bad input if the path's ending names no kind of picture that can be written.
void requirePictureName(const std::string& option, const std::string& path);

}  // namespace fisheye_calibration::program
