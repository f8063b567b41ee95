#include "commands/detect_command.h"

#include <limits>
#include <optional>
#include <ostream>

#include "base/failure.h"
#include "base/text.h"
#include "checks/finding.h"
#include "checks/input_checks.h"
#include "commands/option_values.h"
#include "drawing/target_overlay.h"
#include "files/output_places.h"
#include "files/picture_file.h"
#include "files/points_csv.h"

namespace fisheye_calibration::program {
namespace {

constexpr int kLargestGridSide = 200;

struct World {
  float spacing = 0;
  Pair origin;
  int firstId = 1;
};

Target parseTarget(const TargetOptions& options) {
  if (options.chessboard.empty() == options.circles.empty()) {
    failBadInput(
        "say what to look for: either --chessboard COLUMNSxROWS or --circles COLUMNSxROWS");
  }
  const bool board = !options.chessboard.empty();
  if (board && options.asymmetric) {
    failBadInput("--asymmetric goes with --circles only");
  }
  const Size size = board ? parseSize("--chessboard", options.chessboard, 3, kLargestGridSide)
                          : parseSize("--circles", options.circles, 2, kLargestGridSide);
  const TargetKind kind = board                ? TargetKind::kChessboard
                          : options.asymmetric ? TargetKind::kAsymmetricCircles
                                               : TargetKind::kCircles;
  return {kind, size.width, size.height};
}

World parseWorld(const TargetOptions& options, int pointCount) {
  if (options.spacing.empty()) {
    failBadInput("--spacing is missing: the distance in the world");
  }
  World world;
  world.spacing = parsePositive("--spacing", options.spacing);
  world.origin = parsePair("--origin", options.origin);
  const std::optional<int> firstId = parseInteger(options.firstId);
  if (!firstId || *firstId < 1 || *firstId > std::numeric_limits<int>::max() - pointCount) {
    failBadInput("--first-id: give a whole number from 1, not \"" + options.firstId + "\"");
  }
  world.firstId = *firstId;
  return world;
}

std::vector<CalibrationPoint> numbered(const std::vector<GridPoint>& grid, const World& world) {
  std::vector<CalibrationPoint> points;
  int id = world.firstId;
  for (const GridPoint& place : grid) {
    CalibrationPoint point{};
    point.PointId = id++;
    const double spacing = static_cast<double>(world.spacing);
    point.Xw =
        static_cast<float>(static_cast<double>(world.origin.first) + spacing * place.world.x);
    point.Yw =
        static_cast<float>(static_cast<double>(world.origin.second) + spacing * place.world.y);
    point.ImagePtX = place.image.x;
    point.ImagePtY = place.image.y;
    points.push_back(point);
  }
  return points;
}

std::string describeTarget(const Target& target) {
  const char* what = target.kind == TargetKind::kChessboard ? " inner corners"
                     : target.kind == TargetKind::kCircles  ? " circles"
                                                            : " staggered circles";
  return std::to_string(target.columns) + " x " + std::to_string(target.rows) + what;
}

}  // namespace

DetectedTarget detectInPicture(const std::string& image, const TargetOptions& options,
                               OutputFiles& files, std::ostream& messages) {
  const Target target = parseTarget(options);
  const World world = parseWorld(options, target.columns * target.rows);
  if (!options.overlay.empty()) {
    requireWritablePlace("--overlay", options.overlay);
    requirePictureName("--overlay", options.overlay);
    if (isSameFile(options.overlay, image)) {
      failBadInput("--overlay: " + options.overlay + " is the picture itself");
    }
  }
  DetectedTarget found;
  found.grey = readGreyPicture(image);
  const std::optional<Detection> detection = detectTarget(
      found.grey, target,
      [&](const std::string& step) { messages << image << ": " << step << " ..." << std::endl; });
  if (!detection) {
    failJob(image + ": no target with " + describeTarget(target) +
            " was found; is the count right, the whole target in view, sharp and evenly lit?");
  }
  found.points = numbered(detection->grid, world);
  found.summary = std::to_string(found.points.size()) + " points (" + describeTarget(target) +
                  ", found by " + detection->method + ")";
  if (!options.overlay.empty()) {
    const std::string caption = found.summary + ", spacing " + shortest(world.spacing) +
                                "; point " + std::to_string(world.firstId) + " at (" +
                                shortest(world.origin.first) + ", " +
                                shortest(world.origin.second) + ")";
    files.stage(
        options.overlay,
        encodePicture(options.overlay, drawTargetOverlay(found.grey, found.points, caption)));
  }
  return found;
}

int runDetect(const DetectOptions& options, std::ostream& out, std::ostream& messages) {
  requireWritablePlace("-o", options.output);
  if (isSameFile(options.output, options.image)) {
    failBadInput("-o: " + options.output + " is the picture itself");
  }
  OutputFiles files;
  const DetectedTarget found = detectInPicture(options.image, options.target, files, messages);
  for (const Finding& finding : checkInput(found.points, {found.grey.cols, found.grey.rows})) {
    messages << "warning: " << finding.text << "\n";
  }
  files.stage(options.output, formatPoints(found.points));
  files.commit();
  out << options.image << ": " << found.summary << " written to " << options.output << "\n";
  return kExitOk;
}

}  // namespace fisheye_calibration::program
