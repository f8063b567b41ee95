// Reading and writing of pictures.
#pragma once

#include <filesystem>
#include <opencv2/core.hpp>
#include <string>

#include "files/output_files.h"

namespace fisheye_calibration::program {

// True if the file's first bytes are those of a picture.
bool isPicture(const std::filesystem::path& path);

// Eight-bit grey, as stored (not turned by the camera's orientation tag: pixel coordinates must be
// those of the sensor). Fails as bad input.
cv::Mat readGreyPicture(const std::filesystem::path& path);

// The same in colour (three channels).
cv::Mat readColourPicture(const std::filesystem::path& path);

// One channel for grey pictures, three for all others.
cv::Mat readFrame(const std::filesystem::path& path);

// Fails as bad input if the path's extension names no kind of picture that can be written.
void requirePictureName(const std::string& option, const std::filesystem::path& path);

// Stages the picture as a file of the kind that the path's extension names.
void stagePicture(OutputFiles& files, const std::filesystem::path& path, const cv::Mat& picture);

}  // namespace fisheye_calibration::program
