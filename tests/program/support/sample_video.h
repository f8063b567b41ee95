// Videos in Motion JPEG, which every build of the image library writes and reads, whole and
// damaged.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace fisheye_calibration::program {

constexpr double kSampleRate = 12;  // frames per second; whole, as such files need it

// True if the image library itself reads by FFmpeg: streams, and videos that have been cut off.
bool hasFfmpeg();

// Writes the pictures as an .avi file.
void writeVideo(const std::string& path, const std::vector<cv::Mat>& pictures);

// Evenly grey colour pictures: frame i (from 1) has the value shadeOf(i).
int shadeOf(int frame);
std::vector<cv::Mat> shadedPictures(int count, const cv::Size& size);

// The frame (from 1) whose shade this is, as far as compression keeps it; 0 if there is none.
int frameOfShade(const cv::Mat& picture, int count);

// Replaces the compressed picture of a frame (from 1) with these bytes, filled up with zeros. They
// must not be longer.
void replaceFrame(const std::string& path, int frame, const std::string& bytes);

// Cuts the file off in the middle of the compressed picture of a frame (from 1).
void cutOffIn(const std::string& path, int frame);

}  // namespace fisheye_calibration::program
