#include "stitching/common_points.h"

#include <algorithm>
#include <cstddef>

namespace fisheye_calibration::stitching {
namespace {

void appendOccurrences(std::span<const CalibrationPoint> points, CameraOfPair camera, int idCount,
                       std::vector<CommonPoint>& occurrences) {
  for (const CalibrationPoint& point : points) {
    if (point.PointId >= 1 && point.PointId <= idCount) {
      occurrences.push_back({&point, camera});
    }
  }
}

}  // namespace

// A point is shared if its id occurs exactly twice in both lists together, even twice in one of
// them (compatibility 46). Sorting takes n log n whatever the ids are; a table of counters would be
// as large as the range of ids.
std::vector<CommonPoint> commonPoints(std::span<const CalibrationPoint> first,
                                      std::span<const CalibrationPoint> second, int idCount) {
  std::vector<CommonPoint> occurrences;
  occurrences.reserve(first.size() + second.size());
  appendOccurrences(first, CameraOfPair::kFirst, idCount, occurrences);
  appendOccurrences(second, CameraOfPair::kSecond, idCount, occurrences);
  const auto byId = [](const CommonPoint& a, const CommonPoint& b) {
    return a.point->PointId < b.point->PointId;
  };
  std::stable_sort(occurrences.begin(), occurrences.end(), byId);

  constexpr std::ptrdiff_t kTimesShared = 2;
  auto kept = occurrences.begin();
  for (auto begin = occurrences.begin(); begin != occurrences.end();) {
    const auto end = std::upper_bound(begin, occurrences.end(), *begin, byId);
    if (end - begin == kTimesShared) {
      for (auto it = begin; it != end; ++it) {
        *kept++ = *it;
      }
    }
    begin = end;
  }
  occurrences.erase(kept, occurrences.end());
  return occurrences;
}

}  // namespace fisheye_calibration::stitching

using namespace fisheye_calibration::stitching;

// Copies are appended to the outputs (compatibility 47).
void GetCommonPoints(std::vector<CalibrationPoint> first, std::vector<CalibrationPoint> second,
                     int idCount, std::vector<CalibrationPoint>& firstCommon,
                     std::vector<CalibrationPoint>& secondCommon) {
  for (const CommonPoint& shared : commonPoints(first, second, idCount)) {
    (shared.camera == CameraOfPair::kFirst ? firstCommon : secondCommon).push_back(*shared.point);
  }
}
