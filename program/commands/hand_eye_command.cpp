#include "commands/hand_eye_command.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "commands/declared_options.h"
#include "drawing/affine_plot.h"
#include "files/output_files.h"
#include "files/output_paths.h"
#include "files/picture_file.h"
#include "files/points_csv.h"
#include "fisheye_calibration.h"
#include "geometry/point_spread.h"
#include "reports/affine_report.h"

namespace fisheye_calibration::program {
namespace {

constexpr std::size_t kFewestPoints = 3;

// Below this ratio of breadth to length the points count as collinear: their positions are floats,
// with about this relative precision.
constexpr double kThinnestSpread = 1e-5;

struct HandEyeOptions {
  std::filesystem::path points;
  std::filesystem::path output;
  std::filesystem::path plot;  // empty: none
};

void checkOutputs(const HandEyeOptions& options) {
  requireWritable("-o", options.output);
  if (isSameFile(options.output, options.points)) {
    failBadInput("-o: " + nameOf(options.output) + " is the file of the points");
  }
  if (options.plot.empty()) {
    return;
  }
  requireWritable("--plot", options.plot);
  requirePictureName("--plot", options.plot);
  if (isSamePath(options.plot, options.output) || isSameFile(options.plot, options.points)) {
    failBadInput("--plot: " + nameOf(options.plot) + " is named twice");
  }
}

std::vector<CalibrationPoint> readSpreadPoints(const std::filesystem::path& path) {
  std::vector<CalibrationPoint> points = readPoints(path);
  if (points.size() < kFewestPoints) {
    failBadInput(nameOf(path) + ": " + std::to_string(points.size()) +
                 " point(s); an affine map needs at least three");
  }
  if (!(flatness(imagePositions(points)) > kThinnestSpread)) {
    failBadInput(nameOf(path) + ": the image points lie on one line, which fixes no map");
  }
  return points;
}

AffineMap fitted(const std::vector<CalibrationPoint>& points, const std::string& name) {
  AffineMap map;
  if (!HandEyeCalibration(points, map.coefficients.data(), map.errorX, map.errorY)) {
    failJob(name + ": the library could not fit a map");
  }
  if (!std::all_of(map.coefficients.begin(), map.coefficients.end(),
                   [](double value) { return std::isfinite(value); })) {
    failJob(name + ": the fit gave no finite numbers");
  }
  return map;
}

int run(const HandEyeOptions& options, const Streams& streams) {
  checkOutputs(options);
  const std::vector<CalibrationPoint> points = readSpreadPoints(options.points);
  const AffineMap map = fitted(points, nameOf(options.points));
  OutputFiles files;
  files.stage(options.output, formatAffine(map));
  if (!options.plot.empty()) {
    stagePicture(files, options.plot, drawAffinePlot(map, points));
  }
  files.commit();
  streams.out << describeAffine(map, points) << "Coefficients written to "
              << nameOf(options.output);
  if (!options.plot.empty()) {
    streams.out << ", residuals drawn in " << nameOf(options.plot);
  }
  streams.out << "\n";
  return kExitOk;
}

}  // namespace

Command addHandEyeCommand(CLI::App& app) {
  const auto options = std::make_shared<HandEyeOptions>();
  CLI::App* command =
      addCommand(app, "hand-eye", "Fit the affine map from raw-image pixels to the work plane");
  addPath(*command, "points", options->points, "points (CSV), at least three").required();
  addPath(*command, "-o,--output", options->output, "the coefficients: a,b,c,d,e,f")
      .typeName("CSV")
      .required();
  addPath(*command, "--plot", options->plot, "picture of the residuals on the work plane")
      .typeName("PICTURE");
  setFooter(
      *command,
      "Xw = a x + b y + e, Yw = c x + d y + f. The lens's distortion is not taken into account.\n\n"
      "Example:\n  fisheye-calibration hand-eye points.csv -o affine.csv --plot residuals.png");
  return {command, [options](const Streams& streams) { return run(*options, streams); }};
}

}  // namespace fisheye_calibration::program
