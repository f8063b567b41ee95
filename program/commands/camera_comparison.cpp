// simulate --compare: how far one camera is off another, the true one.
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <ostream>
#include <string>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/record_fields.h"
#include "base/text.h"
#include "checks/checked_camera.h"
#include "commands/option_values.h"
#include "commands/simulate_options.h"
#include "geometry/bed_grid.h"
#include "geometry/conversions.h"
#include "geometry/metric_picture.h"
#include "geometry/raw_ray.h"

namespace fisheye_calibration::program {
namespace {

using Param = FishEyeCalibrationParam;

void printTable(const Param& truth, const Param& result, std::ostream& out) {
  const auto row = [&](const std::string& name, const std::string& a, const std::string& b,
                       const std::string& difference, const std::string& unit) {
    out << "  " << padRight(name, 4) << padLeft(a, 15) << padLeft(b, 15) << padLeft(difference, 15)
        << (unit.empty() ? "" : "  " + unit) << "\n";
  };
  row("", "truth", "result", "difference", "");
  constexpr const char* kShown[] = {"fx", "fy", "u0", "v0", "k0", "k1",
                                    "Rx", "Ry", "Rz", "Tx", "Ty", "Tz"};
  for (const char* name : kShown) {
    for (const RecordField& field : recordFields()) {
      if (std::string(field.name) == name) {
        const int decimals = name[0] == 'R' || name[0] == 'k' ? 6 : 3;
        const double a = field.value(truth);
        const double b = field.value(result);
        row(name, fixed(a, decimals), fixed(b, decimals), fixed(b - a, decimals), field.unit);
      }
    }
  }
}

cv::Rect2d bedOf(const SimulateOptions& options, const CheckedCamera& truth) {
  if (!options.bed.empty()) {
    return parseArea("--bed", options.bed);
  }
  if (!truth.corrected) {
    failBadInput("--bed: " + nameOf(options.truthCamera) +
                 " does not note what the bed is, so give it");
  }
  const MetricPicture view = metricPicture(truth.param, *truth.corrected);
  return {view.bedAt({-0.5, -0.5}), view.bedAt({view.size.width - 0.5, view.size.height - 0.5})};
}

struct Distances {
  double pixels = 0;
  double world = 0;
  int points = 0;
};

// At the worst point of the bed that the true camera sees; not a number where the other camera
// has none.
Distances largestDistances(const CheckedCamera& truth, const Param& result, const cv::Rect2d& bed) {
  constexpr int kCells = 60;  // along the longer side
  Distances largest;
  for (const cv::Point2d& point : gridOver(bed, kCells).points()) {
    const cv::Point2f world(point);
    const cv::Point2f at = rawPosition(truth.param, world);
    if (truth.image && !isInPicture(at, *truth.image)) {
      continue;
    }
    const SeenPoint seen = bedPointAt(result, at);
    const double off = seen.sight == Sight::kBed ? cv::norm(seen.bed - cv::Point2d(world))
                                                 : std::numeric_limits<double>::quiet_NaN();
    const double pixels = cv::norm(cv::Point2d(rawPosition(result, world) - at));
    largest.world = off <= largest.world ? largest.world : off;
    largest.pixels = pixels <= largest.pixels ? largest.pixels : pixels;
    ++largest.points;
    if (std::isnan(largest.world) || std::isnan(largest.pixels)) {
      break;
    }
  }
  return largest;
}

}  // namespace

int compareWithTruth(const SimulateOptions& options, const Streams& streams) {
  if (options.truthCamera.empty()) {
    failBadInput("--truth-camera is missing: the true camera's parameter file");
  }
  const double tolerance = parsePositiveNumber("--tolerance", options.tolerance);
  const CheckedCamera truth =
      loadCheckedCamera(options.truthCamera, options.force, streams.messages);
  const CheckedCamera result = loadCheckedCamera(options.compare, options.force, streams.messages);
  const Distances largest = largestDistances(truth, result.param, bedOf(options, truth));
  if (largest.points == 0) {
    failBadInput("--bed: the true camera sees nothing of it");
  }
  printTable(truth.param, result.param, streams.out);
  streams.out << "Largest difference on the bed: " << fixed(largest.world, 3) << " mm, "
              << fixed(largest.pixels, 3) << " px\n";
  if (largest.world <= tolerance) {
    return kExitOk;
  }
  failJob(nameOf(options.compare) + ": more than " + shortest(tolerance) +
          " mm off the true camera");
}

}  // namespace fisheye_calibration::program
