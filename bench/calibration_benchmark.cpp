// SingleCamCalibration against the plain derivation of the same solution, which decomposes the
// whole Jacobian in every step, on one noisy view of a tilted target. One thread.
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "fisheye_calibration.h"
#include "support/plain_single.h"
#include "support/synthetic_rig.h"
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

// Prints one line; returns false if the two solutions differ.
bool compareOn(int columns, int rows) {
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
  std::printf("%6zu %12.3f %12.3f %9.1f\n", points.size(), result.ours, result.theirs,
              result.ratio);
  return std::abs(rms - plainRms) < 1e-6 && std::abs(ours.fx - plain.fx) < 1e-3F;
}

}  // namespace

int main() {
  cv::setNumThreads(1);
  std::printf("points      ours/ms     plain/ms     ratio\n");
  const bool agree = compareOn(10, 10) && compareOn(25, 20) && compareOn(50, 40);
  if (!agree) {
    std::fprintf(stderr, "the two solutions differ\n");
  }
  return agree ? EXIT_SUCCESS : EXIT_FAILURE;
}
