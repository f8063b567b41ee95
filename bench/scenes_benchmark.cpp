// SingleCamCorrected, image and mask, on scenes that ask different things of a renderer, against
// the plain pipeline, on the machine's best instruction set and on AVX2. One thread.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "allocation_peak.h"
#include "contestants.h"
#include "instruction_sets.h"
#include "program.h"
#include "scenes.h"
#include "table.h"
#include "timing.h"

namespace {

constexpr int kRounds = 7;
constexpr int kWidth = 1280;
constexpr int kHeight = 960;

// Percentage of the view's pixels without content.
double shareOutside(const bench::View& view) {
  const auto outside = std::count_if(view.mask.begin(), view.mask.end(),
                                     [](unsigned char byte) { return byte != 0; });
  return 100.0 * static_cast<double>(outside) / static_cast<double>(view.mask.size());
}

// Prints a line for each instruction set; returns false if a view is not the plain one.
bool compareOn(const bench::NamedScene& named, int bitCount, const bench::Table& table,
               bench::Report& report) {
  const std::vector<std::int64_t> sets = bench::bestInstructionSetAndAvx2();
  bench::Scene scene = named.make({kWidth, kHeight}, bitCount);
  const bool agree = bench::givesPlainBytes(scene, sets);
  bench::View view(scene);
  const long bytes = bench::AllocationPeak::of([&] { bench::renderOurs(scene, view); });

  std::vector<bench::Contestant> contestants = {{[&] { bench::renderPlainly(scene, view); }}};
  bench::addOnEach(
      sets, [&] { bench::renderOurs(scene, view); }, contestants);
  const auto times = bench::timesInTurn(kRounds, contestants);
  for (std::size_t i = 0; i < sets.size(); ++i) {
    const bench::Times& ours = times[1 + i];
    const double ratio = bench::medianRatio(times[0], ours);
    report.add(named.name + ", " + std::to_string(bitCount) + " bits, plain/ours",
               bench::Better::kHigher, bench::nameOf(sets[i]), ratio);
    table.add({named.name, std::to_string(bitCount), bench::nameOf(sets[i]),
               bench::fixed(shareOutside(view), 0),
               bench::fixed(1e6 * bench::median(ours) / static_cast<double>(scene.viewPixels()), 2),
               bench::fixed(ratio, 1), bench::kilobytes(bytes)});
  }
  return agree;
}

bool compareAll(bench::Report& report) {
  std::printf("%d x %d; plain/ours: above 1 the library is faster\n", kWidth, kHeight);
  const bench::Table table({"scene                       ", "bits", "  vectors", "outside/%",
                            "ns/pixel", "plain/ours", "memory/KB"});
  bool agree = true;
  for (const bench::NamedScene& scene : bench::namedScenes()) {
    for (const int bitCount : {8, 24}) {
      agree = compareOn(scene, bitCount, table, report) && agree;
    }
  }
  return agree;
}

}  // namespace

int main(int argc, char** argv) { return bench::runBenchmark(argc, argv, "scenes", compareAll); }
