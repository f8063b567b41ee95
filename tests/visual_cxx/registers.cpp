// A bool is returned in a register of which Visual C++ reads only the lowest byte. Hosts that bind
// to the names from other languages read more of it, as their own type of truth values.
#include <cstdio>

#include "host.h"
#include "runtime.h"

namespace {

using host::Points;

template <class... Arguments>
using WithWholeRegister = unsigned long long (*)(Arguments...);

// The same function, called for the whole register.
template <class... Arguments>
WithWholeRegister<Arguments...> whole(bool (*function)(Arguments...)) {
  return reinterpret_cast<WithWholeRegister<Arguments...>>(reinterpret_cast<void*>(function));
}

}  // namespace

void checkRegisters() {
  FishEyeCalibrationParam camera = host::sampleCamera();
  DualFishEyeCalibrationParam dual = {0.25f, 4, 3, -20, 70, 12.75f, -3.5f};
  unsigned char pixels[64] = {};
  unsigned char view[64];
  double params[8];
  double value = 0;
  float x = 0;
  float y = 0;
  float z = 0;
  int bits = 0;
  ImageLong size = 0;
  Points points = host::targetPoints(4, 4);
  const Points many(100);
  const char* const file = "./registers.ini";
  const unsigned long long results[] = {
      whole(&SingleCamCalibration)(nullptr, 640, 480, 8, points, 640, 480, camera, value),
      whole(&SaveCalibrationParam)(file, camera),
      whole(&LoadCalibrationParam)(file, camera),
      whole(&LoadCalibrationParam)("./missing.ini", camera),
      whole(&SaveDualCamerasCalibrationParam)(file, dual),
      whole(&LoadDualCamerasCalibrationParam)(file, dual),
      whole(&SingleCamCorrected)(pixels, 4, 4, 8, camera, view, 4, 4, view),
      whole(&RawImageToCorrectedImagePoint)(1, 2, camera, x, y),
      whole(&WorldToRawImagePoint)(1, 2, 0, camera, x, y),
      whole(&WorldToCorrectedImagePoint)(1, 2, 0, camera, 2, 2, x, y),
      whole(&WorldToSecondCorrectedImagePoint)(1, 2, 0, camera, 2, 2, x, y),
      whole(&RawImageToWorldPoint)(1, 2, camera, x, y, z),
      whole(&CorrectedImageToWorldPoint)(1, 2, 2, 2, camera, x, y, z),
      whole(&HandEyeCalibration)(points, params, value, value),
      whole(&HandEyeCalibration)(many, params, value, value),
      whole(&GetPerspectiveTransformationParam)(Points(), params, value, value),
      whole(&ComputeStitchedImageSize)(pixels, 4, 4, 8, camera, points, pixels, 4, 4, 8, camera,
                                       many, size, size, bits),
      whole(&FishEyeImageStitching)(pixels, 4, 4, 8, camera, points, pixels, 4, 4, 8, camera, many,
                                    nullptr, 0, 0, 8, dual),
      whole(&DualCam_WorldToSecondCorrectedImagePoint)(1, 2, 0, dual, x, y),
      whole(&DualCam_CorrectedImageToWorldPoint)(1, 2, dual, x, y, z)};
  std::remove(file);
  bool areDefined = true;
  bool areBoth[] = {false, false};
  for (const unsigned long long result : results) {
    areDefined = areDefined && result <= 1;
    areBoth[result & 1] = true;
  }
  host::check(areDefined && areBoth[0] && areBoth[1], "results are 0 or 1 in the whole register");
}
