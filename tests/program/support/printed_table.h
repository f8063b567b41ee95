// Reads values from what the program prints.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <sstream>
#include <string>

namespace fisheye_calibration::program {

// The number after the first word `name` of a line; not a number if there is none.
inline double valueOf(const std::string& table, const std::string& name) {
  std::istringstream lines(table);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string word;
    double value = 0;
    if (words >> word && word == name && words >> value) {
      return value;
    }
  }
  return NAN;
}

inline std::ptrdiff_t lineCount(const std::string& text) {
  return std::count(text.begin(), text.end(), '\n');
}

}  // namespace fisheye_calibration::program
