// How well a frame is exposed and focused, and whether it has moved.
#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace fisheye_calibration::program {

struct Exposure {
  std::string word;   // "good", "too dark", "too bright", "too little contrast"
  double mean = 0;    // grey level, 0 ... 255
  double dark = 0;    // share of the pixels below 5
  double bright = 0;  // share of the pixels above 250
};
Exposure exposureOf(const cv::Mat& grey);

struct Focus {
  std::string word;  // "sharp", "soft", "blurred", "nothing to focus on"
  double blur = 0;   // standard deviation of the blur of the sharpest edges, pixels; 0 without any
};
// An edge of height c that is blurred with standard deviation s rises by at most c / (s sqrt(2 pi))
// a pixel. The steepest rise of the picture and its contrast thus tell s; noise makes it look
// sharper by little, because neighbouring rows are averaged.
Focus focusOf(const cv::Mat& grey);

// A small picture in which noise has been averaged away, for comparing frames.
cv::Mat thumbnailOf(const cv::Mat& grey);

// Largest difference of two thumbnails, grey levels; 255 if their sizes differ.
double largestDifference(const cv::Mat& a, const cv::Mat& b);

}  // namespace fisheye_calibration::program
