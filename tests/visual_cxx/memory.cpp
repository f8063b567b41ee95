// Lack of memory where the front takes memory itself or passes vectors on: vectors that claim to
// hold more points than any memory does, in a block like those of large vectors.
#include <cstdint>
#include <cstdlib>
#include <new>

#include "host.h"
#include "runtime.h"

namespace {

using host::check;
using host::Points;

const std::uintptr_t kClaimedBytes = static_cast<std::uintptr_t>(1) << 48;

// The words of a vector.
struct Claim {
  CalibrationPoint* first;
  std::uintptr_t last;
  std::uintptr_t end;
};

Claim claim() {
  const std::uintptr_t given = reinterpret_cast<std::uintptr_t>(std::malloc(5000));
  const std::uintptr_t block = (given + 39) / 32 * 32;
  reinterpret_cast<std::uintptr_t*>(block)[-1] = given;
  CalibrationPoint* const first = reinterpret_cast<CalibrationPoint*>(block);
  *first = CalibrationPoint();
  return {first, block + kClaimedBytes, block + kClaimedBytes};
}

void release(const Claim& vector) { std::free(reinterpret_cast<void**>(vector.first)[-1]); }

template <class Call>
bool runsOutOfMemory(Call call) {
  try {
    call();
  } catch (const std::bad_alloc&) {
    return true;
  } catch (...) {
  }
  return false;
}

Points threePoints() {
  Points points(3);
  for (std::size_t i = 0; i < 3; ++i) points[i].PointId = static_cast<std::int32_t>(i + 1);
  return points;
}

bool keepsAFullVector() {
  Claim full = claim();
  const Claim before = full;
  Points common;
  const bool isOut = runsOutOfMemory([&] {
    GetCommonPoints(threePoints(), Points(threePoints()), 3, common,
                    reinterpret_cast<Points&>(full));
  });
  const bool isKept =
      full.first == before.first && full.last == before.last && full.end == before.end;
  release(full);
  return isOut && isKept && common.size() == 1 && common[0].PointId == 1;
}

bool freesVectorsTooLargeToCopy() {
  // By value means by address.
  typedef bool (*Fit)(Claim*, double*, double&, double&);
  typedef bool (*Size)(unsigned char*, ImageLong, ImageLong, int, FishEyeCalibrationParam, Claim*,
                       unsigned char*, ImageLong, ImageLong, int, FishEyeCalibrationParam, Claim*,
                       ImageLong&, ImageLong&, int&);
  void* const fit = reinterpret_cast<void*>(&HandEyeCalibration);
  void* const size = reinterpret_cast<void*>(&ComputeStitchedImageSize);
  double params[6];
  double error = 0;
  Claim one = claim();
  const bool isOutOfOne =
      runsOutOfMemory([&] { reinterpret_cast<Fit>(fit)(&one, params, error, error); });
  Claim first = claim();
  Claim second = claim();
  FishEyeCalibrationParam camera = FishEyeCalibrationParam();
  unsigned char pixel = 0;
  ImageLong width = 0;
  ImageLong height = 0;
  int bits = 0;
  const bool isOutOfTwo = runsOutOfMemory([&] {
    reinterpret_cast<Size>(size)(&pixel, 1, 1, 8, camera, &first, &pixel, 1, 1, 8, camera, &second,
                                 width, height, bits);
  });
  return isOutOfOne && isOutOfTwo;
}

void runOut() {
  keepsAFullVector();
  freesVectorsTooLargeToCopy();
}

}  // namespace

void checkMemory() {
  check(keepsAFullVector(), "a vector that cannot grow is kept");
  check(freesVectorsTooLargeToCopy(), "vectors too large to copy are a std::bad_alloc");
  host::checkBalance("running out of memory leaves none in use", runOut);
}
