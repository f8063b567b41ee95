// Compares measured ratios with stored ones.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "ratios.h"

namespace bench {

struct RatioCheck {
  std::size_t compared = 0;
  std::vector<std::string> losses;   // one line for each ratio that is too much worse
  std::vector<std::string> skipped;  // what only one of the two has, a line for each or for a group
};

// Part by which a ratio became worse: 0.2 for 4 instead of 5 where higher is better, and for 1.2
// instead of 1 where lower is better; negative for a gain.
double lossOf(Better better, double stored, double measured);

// A ratio is lost if its loss is above `tolerance` or not a number.
RatioCheck checkRatios(const Ratios& stored, const Ratios& measured, double tolerance);

}  // namespace bench
