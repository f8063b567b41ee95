#include <algorithm>
#include <cstddef>

#include "fisheye_calibration.h"

namespace fisheye_calibration::stitching {
namespace {

struct Occurrence {
  const CalibrationPoint* point;
  std::vector<CalibrationPoint>* common;  // receives a copy if the point is shared
};

void appendOccurrences(const std::vector<CalibrationPoint>& points, int idCount,
                       std::vector<CalibrationPoint>& common,
                       std::vector<Occurrence>& occurrences) {
  for (const CalibrationPoint& point : points) {
    if (point.PointId >= 1 && point.PointId <= idCount) {
      occurrences.push_back({&point, &common});
    }
  }
}

}  // namespace
}  // namespace fisheye_calibration::stitching

using namespace fisheye_calibration::stitching;

// A point is shared if its id occurs exactly twice in both lists together, even twice in one of
// them (compatibility 46). Copies are appended to the outputs (compatibility 47). Sorting takes
// n log n whatever the ids are; a table of counters would be as large as the range of ids.
void GetCommonPoints(std::vector<CalibrationPoint> first, std::vector<CalibrationPoint> second,
                     int idCount, std::vector<CalibrationPoint>& firstCommon,
                     std::vector<CalibrationPoint>& secondCommon) {
  std::vector<Occurrence> occurrences;
  occurrences.reserve(first.size() + second.size());
  appendOccurrences(first, idCount, firstCommon, occurrences);
  appendOccurrences(second, idCount, secondCommon, occurrences);
  const auto byId = [](const Occurrence& a, const Occurrence& b) {
    return a.point->PointId < b.point->PointId;
  };
  std::stable_sort(occurrences.begin(), occurrences.end(), byId);

  constexpr std::ptrdiff_t kTimesShared = 2;
  for (auto begin = occurrences.begin(); begin != occurrences.end();) {
    const auto end = std::upper_bound(begin, occurrences.end(), *begin, byId);
    if (end - begin == kTimesShared) {
      for (auto it = begin; it != end; ++it) {
        it->common->push_back(*it->point);
      }
    }
    begin = end;
  }
}
