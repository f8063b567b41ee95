// SingleCamCorrected's time per pixel from small views to the largest whose buffers have at most
// 2^31 - 1 bytes. Frames have sides of at most 32766 pixels, because positions in a frame have 16
// bits; larger views show such a frame enlarged. Samples of the pixels are compared with the plain
// derivation. One thread.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "allocation_peak.h"
#include "contestants.h"
#include "instruction_sets.h"
#include "program.h"
#include "sampled_pixels.h"
#include "scenes.h"
#include "table.h"
#include "timing.h"

namespace {

constexpr int kLongestFrameSide = 32766;
constexpr double kPixelsOfManyRounds = 1e8;  // of larger views one run is timed
constexpr int kManyRounds = 5;

cv::Size largestSquare(int bitCount) {
  const double pixels = std::numeric_limits<std::int32_t>::max() / (bitCount / 8);
  const int side = static_cast<int>(std::sqrt(pixels));
  return {side, side};
}

std::vector<cv::Size> sizesFor(int bitCount, bool large) {
  std::vector<cv::Size> sizes = {{1280, 960}, {2592, 1944}, {5184, 3888}, {10368, 7776}};
  if (large) {
    sizes.emplace_back(20736, 15552);
    sizes.push_back(largestSquare(bitCount));
  }
  return sizes;
}

cv::Size frameFor(const cv::Size& view) {
  return {std::min(view.width, kLongestFrameSide), std::min(view.height, kLongestFrameSide)};
}

struct Outcome {
  double nanoseconds;  // per pixel
  bool agrees;
};

Outcome measure(const cv::Size& size, int bitCount, const bench::Table& table) {
  bench::Scene scene = bench::usualScene(frameFor(size), size, bitCount);
  bench::View view(scene);
  const auto render = [&] { bench::renderOurs(scene, view); };
  const long bytes = bench::AllocationPeak::of(render);  // warms up, too
  const auto pixels = static_cast<double>(scene.viewPixels());
  const double ms = pixels < kPixelsOfManyRounds
                        ? bench::median(bench::timesInTurn(kManyRounds, {{render}}).front())
                        : bench::processorMilliseconds(render);
  const double nanoseconds = 1e6 * ms / pixels;
  table.add({bench::textOf(size), std::to_string(bitCount), bench::fixed(ms, 2),
             bench::fixed(nanoseconds, 2), bench::kilobytes(bytes)});
  return {nanoseconds, bench::hasPlainBytesInSamples(scene, view)};
}

bool measureAll(bench::Report& report) {
  const bench::Table table({"size         ", "bits", "   ours/ms", "ns/pixel", "memory/KB"});
  bool agree = true;
  for (const int bitCount : {8, 24, 32}) {
    double smallest = 0;  // ns per pixel of the smallest size
    for (const cv::Size& size : sizesFor(bitCount, report.large())) {
      const Outcome outcome = measure(size, bitCount, table);
      agree = outcome.agrees && agree;
      if (smallest == 0) {
        smallest = outcome.nanoseconds;
        continue;
      }
      report.add(bench::textOf(size, bitCount) + ", time per pixel/at 1280 x 960",
                 bench::Better::kLower, bench::nameOfBestInstructionSet(),
                 outcome.nanoseconds / smallest);
    }
  }
  return agree;
}

}  // namespace

int main(int argc, char** argv) { return bench::runBenchmark(argc, argv, "sizes", measureAll); }
