// Times two ways of doing the same work against each other in one run.
#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace bench {

inline double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

template <class Work>
double milliseconds(Work&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

struct Comparison {
  double ours;    // median, ms
  double theirs;  // median, ms
  double ratio;   // median of theirs/ours, pair by pair
};

// Runs both in turn, once to warm up and then `rounds` times, so that a drift of the machine's
// speed affects both alike.
template <class Ours, class Theirs>
Comparison compare(int rounds, Ours&& ours, Theirs&& theirs) {
  ours();
  theirs();
  std::vector<double> a;
  std::vector<double> b;
  std::vector<double> ratios;
  for (int i = 0; i < rounds; ++i) {
    a.push_back(milliseconds(ours));
    b.push_back(milliseconds(theirs));
    ratios.push_back(b.back() / a.back());
  }
  return {median(a), median(b), median(ratios)};
}

}  // namespace bench
