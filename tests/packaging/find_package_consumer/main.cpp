// Maps a point and stores a camera record in a file, with the public header only.
//   consumer FILE
#include <fisheye_calibration.h>

#include <cmath>
#include <cstdio>

namespace {

int failures = 0;

void expectNear(const char* what, double actual, double expected, double tolerance) {
  if (std::fabs(actual - expected) <= tolerance) return;
  std::printf("%s is %.17g, not %.17g\n", what, actual, expected);
  ++failures;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) return 2;
  FishEyeCalibrationParam camera = FishEyeCalibrationParam();
  camera.fx = 400.25f;
  camera.fy = 500.0f;
  camera.u0 = 320.0f;
  camera.v0 = 240.0f;
  camera.k0 = 0.1;
  camera.k1 = -0.05;
  camera.Tz = 2.0f;
  camera.p1 = 1.234567890123456;

  // (2, 0, 0) lies at depth 2, so r = 1 and theta = pi/4 = 0.785398163:
  // theta_d = theta + 0.1 theta^2 - 0.05 theta^3 = 0.785398163 + 0.061685028 - 0.024223654
  //         = 0.822859537, x = 320 + 400.25 theta_d = 649.349530, y = 240.
  float x = 0;
  float y = 0;
  if (!WorldToRawImagePoint(2, 0, 0, camera, x, y)) return 1;
  expectNear("x", x, 649.349530, 1e-4);
  expectNear("y", y, 240, 0);

  if (!SaveCalibrationParam(arguments[1], camera)) return 1;
  FishEyeCalibrationParam loaded = FishEyeCalibrationParam();
  if (!LoadCalibrationParam(arguments[1], loaded)) return 1;
  expectNear("fx", loaded.fx, 400.25, 0);
  expectNear("k0", loaded.k0, 0.1, 1e-8);
  expectNear("k1", loaded.k1, -0.05, 1e-8);
  expectNear("Tz", loaded.Tz, 2, 0);
  expectNear("p1", loaded.p1, 1.234567890123456, 1e-15);
  return failures == 0 ? 0 : 1;
}
