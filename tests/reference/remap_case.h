// The recorded cases of remap and the inputs that they stand for.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace reference {

struct RemapCase {
  std::string line;
  std::string border;  // constant, transparent or validity
  unsigned char fill;  // beyond the frame, with a transparent border before remap
  int channels;
  cv::Size frame;
  std::string bytes;
  std::string positions;
  cv::Size map;
  std::uint32_t seed;
  std::string hash;
};

std::vector<RemapCase> readRemapCases();

struct RemapInput {
  cv::Mat source;
  cv::Mat map1;  // CV_16SC2, whole parts
  cv::Mat map2;  // CV_16UC1, fractions
};

RemapInput remapInput(const RemapCase& c);

}  // namespace reference
