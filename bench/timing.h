// Times several ways of doing the same work against each other in one run.
#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>
#include <functional>
#include <vector>

namespace bench {

using Times = std::vector<double>;  // ms, one per round

double median(std::vector<double> values);

// Median of a/b, round by round.
double medianRatio(const Times& a, const Times& b);

// Wall-clock time.
template <class Work>
double milliseconds(Work&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

// The processor's time, which other programs on the machine disturb less; for work of one thread.
// On Windows, where std::clock is a wall clock, the same as above.
template <class Work>
double processorMilliseconds(Work&& work) {
  const std::clock_t start = std::clock();
  work();
  return 1e3 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

enum class Clock { kProcessor, kWall };

// Something to time and the conditions it runs under, which are set up outside the timed part.
struct Contestant {
  std::function<void()> work;
  std::int64_t instructionSet = 0;  // of vectorised code (HWY_AVX2 ...); 0: the machine's best
  int threads = 1;                  // of the image library
};

// Adds `work` once for each instruction set.
void addOnEach(const std::vector<std::int64_t>& instructionSets, const std::function<void()>& work,
               std::vector<Contestant>& contestants);

// Runs all in turn, once to warm up and then `rounds` times, so that a drift of the machine's speed
// affects all alike. Short work is repeated within a round. One result per contestant.
std::vector<Times> timesInTurn(int rounds, const std::vector<Contestant>& contestants,
                               Clock clock = Clock::kProcessor);

struct Comparison {
  double ours;    // median, ms
  double theirs;  // median, ms
  double ratio;   // median of theirs/ours
};

// Two contestants, each with one thread and the machine's best instruction set.
Comparison compare(int rounds, std::function<void()> ours, std::function<void()> theirs);

}  // namespace bench
