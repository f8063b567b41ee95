// SingleCamCorrected, image and mask, by instruction set, size and bit count, against three ways of
// making the same view or less (contestants.h, gather.h). One thread.
#include <cstdio>
#include <string>
#include <vector>

#include "allocation_peak.h"
#include "contestants.h"
#include "gather.h"
#include "instruction_sets.h"
#include "program.h"
#include "scenes.h"
#include "table.h"
#include "timing.h"

namespace {

constexpr int kRounds = 5;

// Prints a line for each instruction set; returns false if a view is not the plain one.
bool compareOn(const cv::Size& size, int bitCount, const bench::Table& table,
               bench::Report& report) {
  const std::vector<std::int64_t> sets = bench::instructionSets();
  bench::Scene scene = bench::usualScene(size, bitCount);
  const bool agree = bench::givesPlainBytes(scene, sets);
  const long bytes = bench::AllocationPeak::of(
      [&, view = bench::View(scene)]() mutable { bench::renderOurs(scene, view); });

  bench::View view(scene);
  bench::WarpWithReadyMaps warp(scene);
  const bench::GatherWithReadyPositions gather(scene);
  std::vector<bench::Contestant> contestants = {
      {[&] { bench::renderPlainly(scene, view); }},
      {[&] { warp.run(); }},
      {[&] { gather.run(scene, view); }},
  };
  const std::size_t others = contestants.size();
  bench::addOnEach(
      sets, [&] { bench::renderOurs(scene, view); }, contestants);
  const auto times = bench::timesInTurn(kRounds, contestants);

  const std::string subject = bench::textOf(size, bitCount) + ", ";
  for (std::size_t i = 0; i < sets.size(); ++i) {
    const bench::Times& ours = times[others + i];
    const std::string name = bench::nameOf(sets[i]);
    const double toPlain = bench::medianRatio(times[0], ours);
    const double toWarp = bench::medianRatio(times[1], ours);
    const double toGather = bench::medianRatio(ours, times[2]);
    report.add(subject + "plain/ours", bench::Better::kHigher, name, toPlain);
    report.add(subject + "warp/ours", bench::Better::kHigher, name, toWarp);
    report.add(subject + "ours/gather", bench::Better::kLower, name, toGather);
    const double ms = bench::median(ours);
    table.add({bench::textOf(size), std::to_string(bitCount), name, bench::fixed(ms, 2),
               bench::fixed(1e6 * ms / static_cast<double>(scene.viewPixels()), 2),
               bench::fixed(toPlain, 1), bench::fixed(toWarp, 2), bench::fixed(toGather, 2),
               bench::kilobytes(bytes)});
  }
  return agree;
}

bool compareAll(bench::Report& report) {
  std::puts(
      "plain/ours, warp/ours: above 1 the library is faster\n"
      "ours/gather:           below 1 the library is faster");
  const bench::Table table({"size       ", "bits", "  vectors", " ours/ms", "ns/pixel",
                            "plain/ours", "warp/ours", "ours/gather", "memory/KB"});
  bool agree = true;
  for (const cv::Size size : {cv::Size(1280, 960), cv::Size(2592, 1944), cv::Size(5184, 3888)}) {
    for (const int bitCount : {8, 24, 32}) {
      agree = compareOn(size, bitCount, table, report) && agree;
    }
  }
  return agree;
}

}  // namespace

int main(int argc, char** argv) {
  return bench::runBenchmark(argc, argv, "corrected_image", compareAll);
}
