#include "timing.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <opencv2/core/utility.hpp>

#include "support/chosen_instruction_set.h"

namespace bench {
namespace {

constexpr double kShortest = 10;  // ms; shorter work is repeated
constexpr int kMostRepetitions = 50;

// Mean time of a repetition, ms.
double timeOf(const Contestant& contestant, int repetitions, Clock clock) {
  const support::ChosenInstructionSet chosen(contestant.instructionSet);
  cv::setNumThreads(contestant.threads);
  const auto repeated = [&] {
    for (int i = 0; i < repetitions; ++i) contestant.work();
  };
  const double sum =
      clock == Clock::kWall ? milliseconds(repeated) : processorMilliseconds(repeated);
  cv::setNumThreads(1);
  return sum / repetitions;
}

int repetitionsFor(double time) {
  return time * kMostRepetitions <= kShortest ? kMostRepetitions
                                              : static_cast<int>(std::ceil(kShortest / time));
}

}  // namespace

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

double medianRatio(const Times& a, const Times& b) {
  std::vector<double> ratios;
  for (std::size_t i = 0; i < a.size(); ++i) ratios.push_back(a[i] / b[i]);
  return median(ratios);
}

void addOnEach(const std::vector<std::int64_t>& instructionSets, const std::function<void()>& work,
               std::vector<Contestant>& contestants) {
  for (const std::int64_t set : instructionSets) contestants.push_back({work, set});
}

std::vector<Times> timesInTurn(int rounds, const std::vector<Contestant>& contestants,
                               Clock clock) {
  std::vector<int> repetitions;
  for (const Contestant& contestant : contestants) {
    repetitions.push_back(repetitionsFor(timeOf(contestant, 1, clock)));
  }
  std::vector<Times> times(contestants.size());
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < contestants.size(); ++i) {
      times[i].push_back(timeOf(contestants[i], repetitions[i], clock));
    }
  }
  return times;
}

Comparison compare(int rounds, std::function<void()> ours, std::function<void()> theirs) {
  const auto times = timesInTurn(rounds, {{std::move(ours)}, {std::move(theirs)}});
  return {median(times[0]), median(times[1]), medianRatio(times[1], times[0])};
}

}  // namespace bench
