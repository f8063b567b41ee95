// A host whose vectors are those of debug builds: every function that takes one refuses it.
#include <cstring>
#include <exception>

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
}
