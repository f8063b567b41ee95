#include "commands/target_options.h"

#include <CLI/CLI.hpp>
#include <limits>
#include <optional>
#include <ostream>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "commands/option_values.h"
#include "detection/target_detection.h"
#include "drawing/target_overlay.h"
#include "files/output_paths.h"
#include "files/picture_file.h"

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
  return {.kind = kind, .columns = size.width, .rows = size.height};
}

World parseWorld(const TargetOptions& options, int pointCount) {
  if (options.spacing.empty()) {
    failBadInput("--spacing is missing: the distance in the world");
  }
  const float spacing = parsePositive("--spacing", options.spacing);
  const Pair origin = parsePair("--origin", options.origin);
  const std::optional<int> firstId = parseInteger(options.firstId);
  if (!firstId || *firstId < 1 || *firstId > std::numeric_limits<int>::max() - pointCount) {
    failBadInput("--first-id: give a whole number from 1, not " + inQuotes(options.firstId));
  }
  return {.spacing = spacing, .origin = origin, .firstId = *firstId};
}

void checkOverlay(const std::filesystem::path& overlay, const std::filesystem::path& image) {
  if (overlay.empty()) {
    return;
  }
  requireWritable("--overlay", overlay);
  requirePictureName("--overlay", overlay);
  if (isSameFile(overlay, image)) {
    failBadInput("--overlay: " + nameOf(overlay) + " is the picture itself");
  }
}

std::vector<CalibrationPoint> numbered(const std::vector<GridPoint>& grid, const World& world) {
  // In doubles, and rounded to the record's floats once.
  const auto onBed = [&](float origin, double steps) {
    return static_cast<float>(static_cast<double>(origin) +
                              static_cast<double>(world.spacing) * steps);
  };
  std::vector<CalibrationPoint> points;
  points.reserve(grid.size());
  int id = world.firstId;
  for (const GridPoint& position : grid) {
    points.push_back({.PointId = id++,
                      .Xw = onBed(world.origin.first, position.world.x),
                      .Yw = onBed(world.origin.second, position.world.y),
                      .ImagePtX = position.image.x,
                      .ImagePtY = position.image.y});
  }
  return points;
}

std::string describeTarget(const Target& target) {
  const char* what = target.kind == TargetKind::kChessboard ? " inner corners"
                     : target.kind == TargetKind::kCircles  ? " circles"
                                                            : " staggered circles";
  return std::to_string(target.columns) + " x " + std::to_string(target.rows) + what;
}

std::string caption(const DetectedTarget& found, const World& world) {
  return found.summary + ", spacing " + shortest(world.spacing) + "; point " +
         std::to_string(world.firstId) + " at (" + shortest(world.origin.first) + ", " +
         shortest(world.origin.second) + ")";
}

}  // namespace

void addTargetOptions(CLI::App& command, TargetOptions& target) {
  command.add_option("--chessboard", target.chessboard, "inner corners of the chessboard")
      ->type_name("COLUMNSxROWS");
  command.add_option("--circles", target.circles, "circles of the grid")->type_name("COLUMNSxROWS");
  command.add_flag("--asymmetric", target.asymmetric,
                   "every second row of circles is shifted by half a step");
  command
      .add_option("--spacing", target.spacing,
                  "distance of neighbouring corners or circles, world units; with --asymmetric the "
                  "distance of the rows (half that of the circles in a row)")
      ->type_name("MM");
  command.add_option("--origin", target.origin, "world position of the first point (top left)")
      ->type_name("X,Y")
      ->capture_default_str();
  command.add_option("--first-id", target.firstId, "PointId of the first point")
      ->type_name("N")
      ->capture_default_str();
  addPath(command, "--overlay", target.overlay, "write the picture with the numbered points")
      ->type_name("PICTURE");
}

DetectedTarget detectInPicture(const std::filesystem::path& image, const TargetOptions& options,
                               OutputFiles& files, const Streams& streams) {
  const Target target = parseTarget(options);
  const World world = parseWorld(options, target.columns * target.rows);
  checkOverlay(options.overlay, image);
  const std::string name = nameOf(image);
  DetectedTarget found;
  found.grey = readGreyPicture(image, streams.messages);
  std::optional<Detection> detection;
  try {
    detection = detectTarget(found.grey, target, [&](const std::string& step) {
      streams.progress << name << ": " << step << " ..." << std::endl;
    });
  } catch (const cv::Exception&) {
    failJob(name + ": a picture of " + sizeText({found.grey.cols, found.grey.rows}) +
            " pixels cannot be searched for a target");
  }
  if (!detection) {
    failJob(name + ": no target with " + describeTarget(target) +
            " was found; is the count right, the whole target in view, sharp and evenly lit?");
  }
  found.points = numbered(detection->grid, world);
  found.summary = std::to_string(found.points.size()) + " points (" + describeTarget(target) +
                  ", found by " + detection->method + ")";
  if (!options.overlay.empty()) {
    stagePicture(files, options.overlay,
                 drawTargetOverlay(found.grey, found.points, caption(found, world)));
  }
  return found;
}

}  // namespace fisheye_calibration::program
