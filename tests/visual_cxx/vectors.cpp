// Vectors by value and by reference, below, at and above the size from which blocks are
// over-allocated.
#include "host.h"
#include "runtime.h"

namespace {

using host::check;
using host::Points;

const std::size_t kSizes[] = {1, 63, 64, 65, 10000};

Points numbered(std::size_t count) {
  Points points(count);
  for (std::size_t i = 0; i < count; ++i) {
    points[i].PointId = static_cast<std::int32_t>(count - i);
    points[i].Xw = static_cast<float>(i);
  }
  return points;
}

// The ids ascend in what is appended, after `before` older points.
bool isAppended(const Points& points, std::size_t before, std::size_t count) {
  if (points.size() != before + count) return false;
  for (std::size_t i = 0; i < before; ++i) {
    if (points[i].PointId != -5) return false;
  }
  for (std::size_t i = 0; i < count; ++i) {
    const CalibrationPoint& point = points[before + i];
    if (point.PointId != static_cast<std::int32_t>(i + 1)) return false;
    if (point.Xw != static_cast<float>(count - 1 - i)) return false;
  }
  return true;
}

CalibrationPoint older() {
  CalibrationPoint point = CalibrationPoint();
  point.PointId = -5;
  return point;
}

// Blocks of 4096 bytes and more begin at a multiple of 32.
bool isAligned(const Points& points) {
  return points.capacity() * sizeof(CalibrationPoint) < 4096 ||
         reinterpret_cast<std::uintptr_t>(points.data()) % 32 == 0;
}

bool appendsTo(std::size_t before, std::size_t reserved, std::size_t count) {
  const Points first = numbered(count);
  Points common1(before, older());
  Points common2;
  common2.reserve(reserved);
  GetCommonPoints(first, first, static_cast<int>(count), common1, common2);
  return isAppended(common1, before, count) && isAppended(common2, 0, count) &&
         isAligned(common1) && isAligned(common2) &&
         (reserved < count || common2.capacity() == reserved);
}

void appendToEmptyOnes() {
  bool doAppend = true;
  for (const std::size_t size : kSizes) doAppend = doAppend && appendsTo(0, 0, size);
  if (!doAppend) check(false, "empty vectors receive the common points");
}

void appendToFullOnes() {
  bool doAppend = true;
  for (const std::size_t size : kSizes) {
    for (const std::size_t before : kSizes) doAppend = doAppend && appendsTo(before, 0, size);
  }
  if (!doAppend) check(false, "full vectors receive the common points");
}

void appendToReservedOnes() {
  bool doAppend = true;
  for (const std::size_t size : kSizes) {
    doAppend = doAppend && appendsTo(0, 64, size) && appendsTo(0, 20000, size);
  }
  if (!doAppend) check(false, "reserved vectors receive the common points");
}

void passByValue() {
  for (const std::size_t size : kSizes) {
    double params[6];
    double error = 0;
    HandEyeCalibration(numbered(size), params, error, error);
    const Points reused = numbered(size);
    HandEyeCalibration(reused, params, error, error);
    FishEyeCalibrationParam camera = FishEyeCalibrationParam();
    ImageLong width = 0;
    ImageLong height = 0;
    int bits = 0;
    unsigned char pixel = 0;
    ComputeStitchedImageSize(&pixel, 1, 1, 8, camera, reused, &pixel, 1, 1, 8, camera, Points(),
                             width, height, bits);
    DualFishEyeCalibrationParam dual = DualFishEyeCalibrationParam();
    FishEyeImageStitching(&pixel, 1, 1, 8, camera, Points(), &pixel, 1, 1, 8, camera, reused,
                          nullptr, 0, 0, 8, dual);
    GetPerspectiveTransformationParam(Points(), params, error, error);
  }
}

// Vectors that are moved into the call keep their spare memory, which is freed by its own size;
// what remains is empty and without memory, like a vector that was never filled.
bool passesMovedOnes() {
  double params[6];
  double error = -1;
  bool isSame = true;
  for (const std::size_t reserved : kSizes) {
    for (std::size_t count = 0; count <= 4; count += 4) {
      Points points;
      points.reserve(reserved);
      const Points target = host::targetPoints(2, 2);
      for (std::size_t i = 0; i < count; ++i) points.push_back(target[i]);
      isSame = isSame && HandEyeCalibration(static_cast<Points&&>(points), params, error, error) ==
                             (count == 4);
      isSame = isSame && points.data() == nullptr && points.capacity() == 0;
      isSame = isSame && !HandEyeCalibration(points, params, error, error);
      GetCommonPoints(points, target, 4, points, points);
      isSame = isSame && points.size() == 0;
    }
  }
  return isSame;
}

void passMovedOnes() { passesMovedOnes(); }

}  // namespace

void checkVectors() {
  check(appendsTo(0, 0, 64) && appendsTo(64, 0, 63) && appendsTo(65, 128, 65),
        "common points are appended to the host's vectors");
  host::checkBalance("appending to empty vectors leaves no memory in use", appendToEmptyOnes);
  host::checkBalance("appending to full vectors leaves no memory in use", appendToFullOnes);
  host::checkBalance("appending to reserved vectors leaves no memory in use", appendToReservedOnes);
  host::checkBalance("vectors passed by value are freed", passByValue);
  check(passesMovedOnes(), "vectors moved into a call are read");
  host::checkBalance("vectors moved into a call are freed by their capacity", passMovedOnes);
}
