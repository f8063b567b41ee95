// A host in C++17 that needs no C++ interface of the library: calibrates a camera from three views
// of a target and prints how many millimetres it may be off on the bed.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <vector>

#include "fisheye_calibration.hpp"

namespace {

constexpr fcal::Size kImage{1280, 960};

// Instead of detecting a target in a picture: where a known camera, tilted by `tilt` radians, sees
// points that are 30 mm apart, to a tenth of a pixel.
std::vector<fcal::Point> findTarget(float tilt) {
  fcal::Camera camera{};
  camera.fx = camera.fy = 410;
  camera.u0 = 645;
  camera.v0 = 474;
  camera.k[0] = 0.02;
  camera.k[1] = -0.03;
  camera.rx = tilt;
  camera.ry = -0.2F;
  camera.tx = -150;
  camera.ty = -120;
  camera.tz = 200;
  std::vector<fcal::XYZ> world;
  for (int i = 0; i < 99; ++i) {
    world.push_back({30.0F * static_cast<float>(i % 11), 30.0F * static_cast<float>(i / 11), 0});
  }
  const std::vector<fcal::XY> raw = fcal::worldToRaw(camera, world);
  std::vector<fcal::Point> points(world.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    points[i].id = static_cast<std::int32_t>(i + 1);
    points[i].xw = world[i].x;
    points[i].yw = world[i].y;
    points[i].x = static_cast<float>(static_cast<int>(10 * raw[i].x + 0.5F)) / 10;
    points[i].y = static_cast<float>(static_cast<int>(10 * raw[i].y + 0.5F)) / 10;
  }
  return points;
}

void calibrate() {
  std::vector<std::vector<fcal::Point>> targets{findTarget(0.15F), findTarget(0.3F),
                                                findTarget(0.45F)};
  const std::vector<fcal::Span<const fcal::Point>> views(targets.begin(), targets.end());
  const fcal::ViewsCalibration solved = fcal::calibrateViews(kImage, views);
  std::printf("focal length %.1f px, noise %.3f px\n", solved.solutions[0].fx, solved.noiseSigma);

  // The first view's target lies on the bed.
  const fcal::Calibration bed = fcal::cameraOf(solved.solutions[0], targets[0], kImage);
  std::printf("reprojection error on the bed %.3f px\n", bed.rms);
  const std::vector<fcal::BedPoint> corners{{0, 0}, {300, 0}, {0, 240}, {300, 240}};
  for (const double bound : fcal::bedBounds(solved.solutions[0], corners)) {
    std::printf("within %.3f mm\n", bound);
  }
}

}  // namespace

int main() {
  try {
    calibrate();
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
