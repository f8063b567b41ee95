// SingleCamCalibration against the plain derivation of the same solution, which decomposes the
// whole Jacobian in every step, on one noisy view of a tilted target. One thread.
#include <cmath>
#include <cstdio>
#include <string>

#include "fisheye_calibration.h"
#include "instruction_sets.h"
#include "program.h"
#include "support/plain_single.h"
#include "support/synthetic_rig.h"
#include "table.h"
#include "timing.h"

namespace {

constexpr int kRounds = 9;
constexpr double kBedWidth = 320;        // mm
constexpr double kCameraDistance = 200;  // mm
constexpr double kNoise = 0.1;           // px

std::vector<CalibrationPoint> viewOf(const support::RigCamera& camera, int columns, int rows) {
  support::Bed bed;
  bed.columns = columns;
  bed.rows = rows;
  bed.spacing = kBedWidth / (columns - 1);
  const auto pose = support::poseOver(bed, kCameraDistance, 0.35, -0.25, 0.1);
  return support::calibrationPoints(support::seen(camera, bed, pose, kNoise));
}

// Prints a line; returns false if the two solutions differ.
bool compareOn(int columns, int rows, const bench::Table& table, bench::Report& report) {
  const support::RigCamera camera;
  const cv::Size size = camera.imageSize;
  const std::vector<CalibrationPoint> points = viewOf(camera, columns, rows);
  FishEyeCalibrationParam ours{};
  FishEyeCalibrationParam plain{};
  double rms = 0;
  double plainRms = 0;
  std::vector<CalibrationPoint> work;
  const auto result = bench::compare(
      kRounds,
      [&] {
        work = points;
        SingleCamCalibration(nullptr, size.width, size.height, 8, work, size.width, size.height,
                             ours, rms);
      },
      [&] {
        work = points;
        plain::singleCamCalibration(size, work, size, plain, plainRms);
      });
  report.add(std::to_string(points.size()) + " points, plain/ours", bench::Better::kHigher,
             bench::nameOfBestInstructionSet(), result.ratio);
  table.add({std::to_string(points.size()), bench::fixed(result.ours, 3),
             bench::fixed(result.theirs, 3), bench::fixed(result.ratio, 1)});
  return std::abs(rms - plainRms) < 1e-6 && std::abs(ours.fx - plain.fx) < 1e-3F;
}

bool compareAll(bench::Report& report) {
  std::puts("plain/ours: above 1 the library is faster");
  const bench::Table table({"points", "   ours/ms", "  plain/ms", "plain/ours"});
  return compareOn(10, 10, table, report) && compareOn(25, 20, table, report) &&
         compareOn(50, 40, table, report);
}

}  // namespace

int main(int argc, char** argv) {
  return bench::runBenchmark(argc, argv, "calibration", compareAll);
}
