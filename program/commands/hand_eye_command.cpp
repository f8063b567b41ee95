#include "commands/hand_eye_command.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <ostream>
#include <vector>

#include "base/failure.h"
#include "drawing/affine_plot.h"
#include "files/output_files.h"
#include "files/output_places.h"
#include "files/picture_file.h"
#include "files/points_csv.h"
#include "files/read_file.h"
#include "fisheye_calibration.h"
#include "reports/affine_report.h"

namespace fisheye_calibration::program {
namespace {

constexpr std::size_t kFewestPoints = 3;

// Below this share of the points' extent across their main direction of that along it, they count
// as lying on one line: their positions are floats, good to about this many digits.
constexpr double kThinnestSpread = 1e-5;

// True if the image points lie on a line, or in one place: the smaller principal axis of their
// scatter is nothing beside the larger.
bool onOneLine(const std::vector<CalibrationPoint>& points) {
  const auto n = static_cast<double>(points.size());
  double mx = 0;
  double my = 0;
  for (const CalibrationPoint& point : points) {
    mx += point.ImagePtX / n;
    my += point.ImagePtY / n;
  }
  double xx = 0;
  double xy = 0;
  double yy = 0;
  for (const CalibrationPoint& point : points) {
    const double x = point.ImagePtX - mx;
    const double y = point.ImagePtY - my;
    xx += x * x;
    xy += x * y;
    yy += y * y;
  }
  const double larger = (xx + yy) / 2 + std::hypot((xx - yy) / 2, xy);
  const double smaller = larger > 0 ? (xx * yy - xy * xy) / larger : 0;
  return !(smaller > kThinnestSpread * kThinnestSpread * larger);
}

void requirePlaces(const HandEyeOptions& options) {
  requireWritablePlace("-o", options.output);
  if (isSameFile(options.output, options.points)) {
    failBadInput("-o: " + options.output + " is the file of the points");
  }
  if (options.plot.empty()) {
    return;
  }
  requireWritablePlace("--plot", options.plot);
  requirePictureName("--plot", options.plot);
  if (options.plot == options.output || isSameFile(options.plot, options.output) ||
      isSameFile(options.plot, options.points)) {
    failBadInput("--plot: " + options.plot + " is named twice");
  }
}

}  // namespace

int runHandEye(const HandEyeOptions& options, std::ostream& out) {
  requirePlaces(options);
  const std::vector<CalibrationPoint> points =
      parsePoints(options.points, readFile(options.points));
  if (points.size() < kFewestPoints) {
    failBadInput(options.points + ": " + std::to_string(points.size()) +
                 " point(s); an affine map needs at least three");
  }
  if (onOneLine(points)) {
    failBadInput(options.points + ": the image points lie on one line, which fixes no map");
  }
  AffineMap map;
  if (!HandEyeCalibration(points, map.coefficients.data(), map.errorX, map.errorY)) {
    failJob(options.points + ": the library could not fit a map");
  }
  if (!std::all_of(map.coefficients.begin(), map.coefficients.end(),
                   [](double value) { return std::isfinite(value); })) {
    failJob(options.points + ": the fit gave no finite numbers");
  }
  OutputFiles files;
  files.stage(options.output, formatAffine(map));
  if (!options.plot.empty()) {
    files.stage(options.plot, encodePicture(options.plot, drawAffinePlot(map, points)));
  }
  files.commit();
  out << describeAffine(map, points) << "Coefficients written to " << options.output;
  if (!options.plot.empty()) {
    out << ", residuals drawn in " << options.plot;
  }
  out << "\n";
  return kExitOk;
}

}  // namespace fisheye_calibration::program
