// SingleCamCorrected with two threads of the image library against one.
#include <cstdio>
#include <string>

#include "allocation_peak.h"
#include "contestants.h"
#include "instruction_sets.h"
#include "program.h"
#include "scenes.h"
#include "table.h"
#include "timing.h"

namespace {

constexpr int kRounds = 9;
constexpr int kThreads = 2;

// Prints a line; returns false if a view is not the plain one.
bool compareOn(const cv::Size& size, int bitCount, const bench::Table& table,
               bench::Report& report) {
  bench::Scene scene = bench::usualScene(size, bitCount);
  const bool agree =
      bench::givesPlainBytes(scene, {bench::instructionSets().front()}, {1, kThreads});
  bench::View view(scene);
  const auto render = [&] { bench::renderOurs(scene, view); };
  cv::setNumThreads(kThreads);
  const long bytes = bench::AllocationPeak::of(render);
  cv::setNumThreads(1);

  const auto times =
      bench::timesInTurn(kRounds, {{render}, {render, 0, kThreads}}, bench::Clock::kWall);
  const double ratio = bench::medianRatio(times[0], times[1]);
  report.add(bench::textOf(size, bitCount) + ", one thread/two", bench::Better::kHigher,
             bench::nameOfBestInstructionSet(), ratio);
  table.add({bench::textOf(size), std::to_string(bitCount),
             bench::fixed(bench::median(times[0]), 2), bench::fixed(bench::median(times[1]), 2),
             bench::fixed(ratio, 2), bench::kilobytes(bytes)});
  return agree;
}

bool compareAll(bench::Report& report) {
  std::puts("one/two: above 1 two threads are faster");
  const bench::Table table(
      {"size       ", "bits", "   one/ms", "   two/ms", "one/two", "memory/KB"});
  bool agree = true;
  for (const cv::Size size : {cv::Size(2592, 1944), cv::Size(5184, 3888)}) {
    for (const int bitCount : {8, 24, 32}) {
      agree = compareOn(size, bitCount, table, report) && agree;
    }
  }
  return agree;
}

}  // namespace

int main(int argc, char** argv) { return bench::runBenchmark(argc, argv, "threads", compareAll); }
