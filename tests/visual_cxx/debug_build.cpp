// A host whose vectors are those of debug builds: every function that takes one refuses it. The C
// interface, which the exception's text advises, serves it.
#include <cstring>
#include <exception>

#include "fisheye_calibration_c.h"
#include "host.h"
#include "runtime.h"

namespace {

using host::Points;

template <class Call>
void checkRefused(const char* what, Call call) {
  bool isRefused = false;
  try {
    call();
  } catch (const std::exception& error) {
    isRefused = std::strstr(error.what(), "_ITERATOR_DEBUG_LEVEL=0") != nullptr;
  }
  host::check(isRefused, what);
}

// Such hosts have another heap, which must not free what the exception holds.
bool isRefusedWithoutMemory() {
  Points points(20);
  FishEyeCalibrationParam camera = FishEyeCalibrationParam();
  double error = 0;
  const host::Heap before = host::heapInUse();
  try {
    SingleCamCalibration(nullptr, 640, 480, 8, points, 640, 480, camera, error);
  } catch (const std::exception&) {
    const host::Heap now = host::heapInUse();
    return before.blocks > 0 && now.blocks == before.blocks && now.bytes == before.bytes;
  }
  return false;
}

// xw = 2 x + 1, yw = 3 y - 1
bool isServedByTheCInterface() {
  Points points(3);
  points[1].ImagePtX = 1;
  points[2].ImagePtY = 1;
  for (std::size_t i = 0; i < 3; ++i) {
    points[i].Xw = 2 * points[i].ImagePtX + 1;
    points[i].Yw = 3 * points[i].ImagePtY - 1;
  }
  double found[6];
  double error[2];
  if (fcal_fit_affine(reinterpret_cast<const fcal_point*>(points.data()), 3, found, &error[0],
                      &error[1]) != FCAL_OK) {
    return false;
  }
  const double expected[6] = {2, 0, 0, 3, 1, -1};
  for (int i = 0; i < 6; ++i) {
    if (!(found[i] - expected[i] < 1e-5 && expected[i] - found[i] < 1e-5)) return false;
  }
  return true;
}

}  // namespace

void checkDebugBuild() {
  static_assert(sizeof(Points) == 32, "a proxy and three pointers");
  unsigned char pixel = 0;
  double value = 0;
  double params[6];
  int bits = 0;
  ImageLong size = 0;
  FishEyeCalibrationParam camera = FishEyeCalibrationParam();
  DualFishEyeCalibrationParam dual = DualFishEyeCalibrationParam();
  const std::size_t counts[] = {20, 0, 100};
  for (const std::size_t count : counts) {
    Points points(count);
    Points common;
    checkRefused("SingleCamCalibration refuses", [&] {
      SingleCamCalibration(nullptr, 640, 480, 8, points, 640, 480, camera, value);
    });
    checkRefused("HandEyeCalibration refuses",
                 [&] { HandEyeCalibration(points, params, value, value); });
    checkRefused("GetPerspectiveTransformationParam refuses",
                 [&] { GetPerspectiveTransformationParam(points, params, value, value); });
    checkRefused("GetCommonPoints refuses",
                 [&] { GetCommonPoints(points, points, 9, common, common); });
    checkRefused("ComputeStitchedImageSize refuses", [&] {
      ComputeStitchedImageSize(&pixel, 1, 1, 8, camera, points, &pixel, 1, 1, 8, camera, points,
                               size, size, bits);
    });
    checkRefused("FishEyeImageStitching refuses", [&] {
      FishEyeImageStitching(&pixel, 1, 1, 8, camera, points, &pixel, 1, 1, 8, camera, points,
                            nullptr, 0, 0, 8, dual);
    });
  }
  host::check(isRefusedWithoutMemory(), "the exception holds no memory");
  host::check(isServedByTheCInterface(), "the C interface serves debug builds");
}
