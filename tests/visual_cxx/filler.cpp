// k2...k5 come from the generator that the host's srand() seeds.
#include <cstdlib>

#include "host.h"
#include "runtime.h"

void checkFiller() {
  host::Points points = host::targetPoints(13, 9);
  FishEyeCalibrationParam camera = FishEyeCalibrationParam();
  double error = 0;
  std::srand(2026);
  SingleCamCalibration(nullptr, 640, 480, 8, points, 640, 480, camera, error);
  const int next = std::rand();
  std::srand(2026);
  const double k2 = std::rand() % 10001 * 0.0001;
  const double k3 = std::rand() % 10001 * 0.00001;
  const double k4 = std::rand() % 10001 * 0.0001;
  const double k5 = std::rand() % 10001 * 0.00001;
  host::check(camera.k2 == k2 && camera.k3 == k3 && camera.k4 == k4 && camera.k5 == k5 &&
                  next == std::rand(),
              "the filler is drawn from the host's generator");
}
