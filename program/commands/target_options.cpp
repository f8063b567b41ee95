#include "commands/target_options.h"

#include <limits>
#include <optional>
#include <ostream>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "commands/declared_options.h"
#include "commands/option_values.h"
#include "detection/charuco_board.h"
#include "detection/markers.h"
#include "drawing/target_overlay.h"
#include "files/output_paths.h"
#include "files/picture_file.h"

namespace fisheye_calibration::program {
namespace {

constexpr int kLargestGridSide = 200;

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

std::string caption(const DetectedTarget& found, const World& world) {
  return found.summary + ", spacing " + shortest(world.spacing) + "; point " +
         std::to_string(world.firstId) + " at (" + shortest(world.origin.first) + ", " +
         shortest(world.origin.second) + ")";
}

[[noreturn]] void failWithoutTarget(const std::string& name, const Target& target,
                                    const std::string& seen) {
  const std::string missing = name + ": no target with " + describeTarget(target) + " was found; ";
  if (!seen.empty()) {
    throw NoTarget(kExitJobFailed, missing + seen);
  }
  throw NoTarget(
      kExitJobFailed,
      missing + (target.kind == TargetKind::kCharuco
                     ? "are the markers those of this target, sharp and evenly lit?"
                     : "is the count right, the whole target in view, sharp and evenly lit?"));
}

void checkMarkers(const TargetOptions& options, const Target& target) {
  if (!markersAvailable()) {
    failBadInput(
        "--charuco: this program was built without markers, which need the image library's module "
        "objdetect from version 4.7 or aruco before it");
  }
  const int count = CharucoBoard(target.columns, target.rows, target.markerShare).markerCount();
  if (count > kLargestMarkerCount) {
    failBadInput("--charuco: " + options.charuco + " needs " + std::to_string(count) +
                 " markers; there are " + std::to_string(kLargestMarkerCount));
  }
}

Target parseCharuco(const TargetOptions& options) {
  const Size size = parseSize("--charuco", options.charuco, 2, kLargestGridSide);
  constexpr int kUsualBits = 5;
  const std::optional<int> bits =
      options.markerBits.empty() ? kUsualBits : parseInteger(options.markerBits);
  if (!bits || *bits < 4 || *bits > 7) {
    failBadInput("--marker-bits: give 4, 5, 6 or 7, not " + inQuotes(options.markerBits));
  }
  Target target = {.kind = TargetKind::kCharuco,
                   .columns = size.width,
                   .rows = size.height,
                   .markerBits = *bits};
  if (!options.marker.empty()) {
    if (options.spacing.empty()) {
      failBadInput("--marker needs --spacing");
    }
    const double side = static_cast<double>(parsePositive("--marker", options.marker));
    target.markerShare = side / static_cast<double>(parsePositive("--spacing", options.spacing));
    if (!(target.markerShare > 0.2 && target.markerShare < 0.95)) {
      failBadInput("--marker: a marker's side is 0.2 to 0.95 of the spacing");
    }
  }
  checkMarkers(options, target);
  return target;
}

}  // namespace

Target parseTarget(const TargetOptions& options) {
  const int kinds = (options.chessboard.empty() ? 0 : 1) + (options.charuco.empty() ? 0 : 1) +
                    (options.circles.empty() ? 0 : 1);
  if (kinds != 1) {
    failBadInput(
        "say which target: --chessboard COLUMNSxROWS, --charuco COLUMNSxROWS or --circles "
        "COLUMNSxROWS");
  }
  if (options.asymmetric && options.circles.empty()) {
    failBadInput("--asymmetric goes with --circles only");
  }
  if (!(options.marker.empty() && options.markerBits.empty()) && options.charuco.empty()) {
    failBadInput("--marker and --marker-bits go with --charuco only");
  }
  if (!options.charuco.empty()) {
    return parseCharuco(options);
  }
  const bool board = !options.chessboard.empty();
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
  const Pair origin = options.origin.empty() ? Pair() : parsePair("--origin", options.origin);
  const std::optional<int> firstId = parseInteger(options.firstId);
  if (!firstId || *firstId < 1 || *firstId > std::numeric_limits<int>::max() - pointCount) {
    failBadInput("--first-id: give a whole number from 1, not " + inQuotes(options.firstId));
  }
  return {.spacing = spacing, .origin = {origin.first, origin.second}, .firstId = *firstId};
}

void addTargetKindOptions(CLI::App& command, TargetOptions& target) {
  addOption(command, "--chessboard", target.chessboard, "inner corners of the chessboard")
      .typeName("COLUMNSxROWS");
  addOption(command, "--charuco", target.charuco,
            "inner corners of a chessboard with markers, which may be in view in part")
      .typeName("COLUMNSxROWS");
  addOption(command, "--circles", target.circles, "circles of the grid").typeName("COLUMNSxROWS");
  addFlag(command, "--asymmetric", target.asymmetric,
          "every second row of circles is shifted by half a step");
  addOption(command, "--marker-bits", target.markerBits,
            "modules on a marker's side, 4 to 7 (default: 5)")
      .typeName("N");
  addOption(command, "--marker", target.marker, "side of a marker (default: 0.7 of the spacing)")
      .typeName("MM");
  addOption(command, "--spacing", target.spacing,
            "distance of neighbouring corners or circles, world units; with --asymmetric the "
            "distance of the rows (half that of the circles in a row)")
      .typeName("MM");
  addOption(command, "--origin", target.origin,
            "world position of the first point (top left; default: 0,0)")
      .typeName("X,Y");
  addOption(command, "--first-id", target.firstId, "PointId of the first point")
      .typeName("N")
      .showDefault();
}

void addTargetOptions(CLI::App& command, TargetOptions& target) {
  addTargetKindOptions(command, target);
  addPath(command, "--overlay", target.overlay, "write the picture with the numbered points")
      .typeName("PICTURE");
}

DetectedTarget detectIn(const cv::Mat& grey, const std::string& name, const TargetOptions& options,
                        std::ostream& progress) {
  const Target target = parseTarget(options);
  const World world = parseWorld(options, target.columns * target.rows);
  Search search;
  try {
    search = detectTarget(grey, target, [&](const std::string& step) {
      progress << name << ": " << step << " ..." << std::endl;
    });
  } catch (const cv::Exception&) {
    failJob(name + ": a picture of " + sizeText({grey.cols, grey.rows}) +
            " pixels cannot be searched for a target");
  }
  if (!search.detection) {
    failWithoutTarget(name, target, search.seen);
  }
  const Detection& detection = *search.detection;
  DetectedTarget found;
  found.grey = grey;
  found.points = numberedPoints(detection.grid, world);
  found.summary = std::to_string(found.points.size()) + " points (" + describeTarget(target) +
                  ", found by " + detection.method + ")";
  return found;
}

cv::Mat overlayOf(const DetectedTarget& found, const TargetOptions& options) {
  const Target target = parseTarget(options);
  const World world = parseWorld(options, target.columns * target.rows);
  return drawTargetOverlay(found.grey, found.points, caption(found, world));
}

DetectedTarget detectInPicture(const std::filesystem::path& image, const TargetOptions& options,
                               OutputFiles& files, const Streams& streams) {
  const Target target = parseTarget(options);
  parseWorld(options, target.columns * target.rows);
  checkOverlay(options.overlay, image);
  DetectedTarget found =
      detectIn(readGreyPicture(image, streams.messages), nameOf(image), options, streams.progress);
  if (!options.overlay.empty()) {
    stagePicture(files, options.overlay, overlayOf(found, options));
  }
  return found;
}

}  // namespace fisheye_calibration::program
