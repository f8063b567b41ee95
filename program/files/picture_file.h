// Reading and writing of pictures.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <opencv2/core.hpp>
#include <string>

#include "files/output_files.h"

namespace fisheye_calibration::program {

// True if the file's first bytes are those of a picture.
bool isPicture(const std::filesystem::path& path);

// Eight-bit grey, turned as the file's orientation tag (EXIF) says. Of a file with 16 bits a pixel,
// the range of values that it uses is scaled to eight bits, which is noted. Fails as bad input for
// files that are no pictures, are damaged or end early.
cv::Mat readGreyPicture(const std::filesystem::path& path, std::ostream& messages);

// The same in colour (three channels).
cv::Mat readColourPicture(const std::filesystem::path& path, std::ostream& messages);

// One channel for grey pictures, three for all others.
cv::Mat readFrame(const std::filesystem::path& path, std::ostream& messages);

// True if the path's extension names a kind of picture that can be written.
bool hasPictureName(const std::filesystem::path& path);

// Fails as bad input if the path's extension names no kind of picture that can be written.
void requirePictureName(const std::string& option, const std::filesystem::path& path);

// Stages the picture as a file of the kind that the path's extension names.
void stagePicture(OutputFiles& files, const std::filesystem::path& path, const cv::Mat& picture);

}  // namespace fisheye_calibration::program
