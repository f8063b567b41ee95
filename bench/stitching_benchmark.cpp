// A whole call of FishEyeImageStitching, by instruction set, against the plain derivation of the
// same canvas: corrections step by step and the canvas loop pixel by pixel. Two 1280 x 960 cameras,
// so the views have 2560 x 1920 pixels. One thread, no debug files.
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "allocation_peak.h"
#include "fisheye_calibration.h"
#include "instruction_sets.h"
#include "program.h"
#include "support/chosen_instruction_set.h"
#include "support/plain_stitching.h"
#include "table.h"
#include "timing.h"

namespace {

using Canvas = std::vector<unsigned char>;

constexpr int kRounds = 5;
constexpr int kWidth = 1280;
constexpr int kHeight = 960;
constexpr float kPixel = 0.1F;           // world units
constexpr float kShiftOfSecond = 90.0F;  // world units between the cameras' datum points

plain::StitchCamera camera(int bits, float datumX, unsigned seed) {
  plain::StitchCamera result;
  result.width = kWidth;
  result.height = kHeight;
  result.bits = bits;
  result.image.resize(static_cast<std::size_t>(kWidth * kHeight * (bits / 8)));
  std::mt19937 random(seed);
  for (unsigned char& byte : result.image) byte = static_cast<unsigned char>(random() >> 24);
  FishEyeCalibrationParam& p = result.param;
  p.fx = 620;
  p.fy = 618;
  p.u0 = 642;
  p.v0 = 477;
  p.k0 = 0.02;
  p.k1 = -0.03;
  p.p1 = 1.05;
  p.p2 = 0.04;
  p.p4 = -0.03;
  p.p5 = 1.02;
  p.p7 = 1e-5;
  p.p8 = -2e-5;
  p.p9 = 1;
  p.ImageDx = -40;
  p.ImageDy = 20;
  p.Pixel = kPixel;
  p.DatumPtXw = datumX;
  p.DatumPtYw = 150;
  for (int i = 0; i < 35; ++i) {
    CalibrationPoint point{};
    point.PointId = i + 1;
    point.Xw = 110 + 15 * static_cast<float>(i % 7);
    point.Yw = 80 + 30 * static_cast<float>(i / 7);
    result.points.push_back(point);
  }
  return result;
}

// The canvas that both cameras share, and the calls that fill it.
struct Pair {
  explicit Pair(int bits)
      : first(camera(bits, 128, 1)), second(camera(bits, 128 + kShiftOfSecond, 2)) {
    for (CalibrationPoint& point : second.points) point.Xw += 0.01F * point.Yw;  // not just a shift
    plain::stitchedImageSize(first, second, width, height);
  }

  Canvas canvas() const {
    return Canvas(
        static_cast<std::size_t>(width) * static_cast<std::size_t>(height * (first.bits / 8)),
        0xa5);
  }

  bool stitch(Canvas& canvas) {
    return FishEyeImageStitching(first.image.data(), first.width, first.height, first.bits,
                                 first.param, first.points, second.image.data(), second.width,
                                 second.height, second.bits, second.param, second.points,
                                 canvas.data(), width, height, first.bits, dual);
  }

  void stitchPlainly(Canvas& canvas) {
    plain::fishEyeImageStitching(first, second, canvas.data(), width, height, first.bits, dual);
  }

  bool givesPlainBytes(const std::vector<std::int64_t>& sets) {
    Canvas theirs = canvas();
    stitchPlainly(theirs);
    bool agree = true;
    for (const std::int64_t set : sets) {
      const support::ChosenInstructionSet chosen(set);
      Canvas ours = canvas();
      if (!stitch(ours) || ours != theirs) {
        std::fprintf(stderr, "%d bits, %s: the canvases differ\n", first.bits,
                     bench::nameOf(set).c_str());
        agree = false;
      }
    }
    return agree;
  }

  plain::StitchCamera first;
  plain::StitchCamera second;
  int width = 0;
  int height = 0;
  DualFishEyeCalibrationParam dual{};
};

// Prints a line for each instruction set; returns false if a canvas is not the plain one.
bool compareAt(int bits, const bench::Table& table, bench::Report& report) {
  const std::vector<std::int64_t> sets = bench::instructionSets();
  Pair pair(bits);
  const bool agree = pair.givesPlainBytes(sets);
  Canvas canvas = pair.canvas();
  const long bytes = bench::AllocationPeak::of([&] { pair.stitch(canvas); });
  std::vector<bench::Contestant> contestants = {{[&] { pair.stitchPlainly(canvas); }}};
  bench::addOnEach(
      sets, [&] { pair.stitch(canvas); }, contestants);
  const auto times = bench::timesInTurn(kRounds, contestants);
  for (std::size_t i = 0; i < sets.size(); ++i) {
    const bench::Times& ours = times[1 + i];
    const double ratio = bench::medianRatio(times[0], ours);
    report.add(std::to_string(bits) + " bits, plain/ours", bench::Better::kHigher,
               bench::nameOf(sets[i]), ratio);
    table.add({std::to_string(pair.width) + " x " + std::to_string(pair.height),
               std::to_string(bits), bench::nameOf(sets[i]), bench::fixed(bench::median(ours), 2),
               bench::fixed(bench::median(times[0]), 2), bench::fixed(ratio, 1),
               bench::kilobytes(bytes)});
  }
  return agree;
}

bool compareAll(bench::Report& report) {
  std::puts("plain/ours: above 1 the library is faster");
  const bench::Table table(
      {"canvas     ", "bits", "  vectors", "   ours/ms", "  plain/ms", "plain/ours", "memory/KB"});
  bool agree = true;
  for (const int bits : {8, 24, 32}) {
    agree = compareAt(bits, table, report) && agree;
  }
  return agree;
}

}  // namespace

int main(int argc, char** argv) { return bench::runBenchmark(argc, argv, "stitching", compareAll); }
