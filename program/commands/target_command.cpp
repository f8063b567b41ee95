#include "commands/target_command.h"

#include <memory>
#include <ostream>
#include <string>
#include <utility>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "commands/declared_options.h"
#include "commands/option_values.h"
#include "commands/target_options.h"
#include "drawing/target_sheet.h"
#include "files/output_files.h"
#include "files/output_paths.h"
#include "files/picture_file.h"
#include "files/points_csv.h"

namespace fisheye_calibration::program {
namespace {

constexpr int kLargestBed = 100000;       // mm
constexpr double kLargestPixels = 100e6;  // of the picture
constexpr double kLargestSide = 20000;    // mm, of the sheet

struct TargetFileOptions {
  TargetOptions target;
  std::string bed;
  std::string pixelsPerMm = "10";
  std::filesystem::path output;   // svg
  std::filesystem::path picture;  // png
  std::filesystem::path points;   // csv
};

void checkOutputs(const TargetFileOptions& options) {
  const std::pair<const char*, const std::filesystem::path&> outputs[] = {
      {"-o", options.output}, {"--picture", options.picture}, {"--points", options.points}};
  for (const auto& [option, path] : outputs) {
    if (path.empty()) {
      continue;
    }
    requireWritable(option, path);
    for (const auto& [other, otherPath] : outputs) {
      if (std::string(option) != other && !otherPath.empty() && isSamePath(path, otherPath)) {
        failBadInput(std::string(option) + " and " + other + " are the same file");
      }
    }
  }
  if (!equalIgnoringCase(nameOf(options.output.extension()), ".svg")) {
    failBadInput("-o: the drawing is an SVG file, so its name ends in .svg: " +
                 nameOf(options.output));
  }
  if (!options.picture.empty()) {
    requirePictureName("--picture", options.picture);
  }
}

// On the picture, in pixels.
std::vector<CalibrationPoint> pointsInPicture(std::vector<CalibrationPoint> points,
                                              double pixelsPerMm) {
  for (CalibrationPoint& point : points) {
    const cv::Point2d there =
        sheetToPicture(cv::Point2d(point.ImagePtX, point.ImagePtY), pixelsPerMm);
    point.ImagePtX = static_cast<float>(there.x);
    point.ImagePtY = static_cast<float>(there.y);
  }
  return points;
}

void checkSheet(const Sheet& sheet, double pixelsPerMm, bool drawn) {
  if (std::max(sheet.size.width, sheet.size.height) > kLargestSide) {
    failBadInput("--spacing: the sheet would be larger than 20 m");
  }
  const double longest = std::max(sheet.size.width, sheet.size.height) * pixelsPerMm;
  const bool tooLarge = sheet.size.area() * pixelsPerMm * pixelsPerMm > kLargestPixels ||
                        longest >= kLargestImageSide;
  if (drawn && tooLarge) {
    failBadInput(
        "--pixels-per-mm: the picture would have more than 100 million pixels or more than " +
        std::to_string(kLargestImageSide) + " a side");
  }
}

int run(TargetFileOptions options, const Streams& streams) {
  checkOutputs(options);
  const double pixelsPerMm =
      static_cast<double>(parsePositive("--pixels-per-mm", options.pixelsPerMm));
  if (pixelsPerMm < 0.1 || pixelsPerMm > 1000) {
    failBadInput("--pixels-per-mm: give a number from 0.1 to 1000");
  }
  const bool bedGiven = !options.bed.empty();
  const Size bed = bedGiven ? parseSize("--bed", options.bed, 1, kLargestBed) : Size();
  if (bedGiven && options.target.spacing.empty() && options.target.marker.empty()) {
    const float advised = advisedSpacing(parseTarget(options.target), bed);
    if (advised < 1) {
      failBadInput("--bed: too small for a target with so many points");
    }
    options.target.spacing = shortest(advised);
  }
  const Target target = parseTarget(options.target);
  World world = parseWorld(options.target, target.columns * target.rows);
  if (bedGiven && options.target.origin.empty()) {
    const cv::Point2d middle = middleOrigin(target, static_cast<double>(world.spacing), bed);
    world.origin = {static_cast<float>(middle.x), static_cast<float>(middle.y)};
  }
  const TargetSheet laidOut = layOutTarget(target, world);
  const Sheet& sheet = laidOut.sheet;
  checkSheet(sheet, pixelsPerMm, !options.picture.empty());

  OutputFiles files;
  files.stage(options.output, sheetAsSvg(sheet));
  if (!options.picture.empty()) {
    stagePicture(files, options.picture, sheetAsPicture(sheet, pixelsPerMm));
  }
  if (!options.points.empty()) {
    files.stage(options.points, formatPoints(pointsInPicture(laidOut.points, pixelsPerMm)));
  }
  files.commit();
  streams.out << nameOf(options.output) << ": " << describeTarget(target) << ", spacing "
              << shortest(world.spacing) << " mm, on a sheet of " << general(sheet.size.width, 6)
              << " x " << general(sheet.size.height, 6) << " mm\n";
  if (bedGiven) {
    for (const std::string& line : adviceFor(target, world, bed)) {
      (line.starts_with("warning") ? streams.messages : streams.out) << line << "\n";
    }
  }
  return kExitOk;
}

}  // namespace

Command addTargetCommand(CLI::App& app) {
  const auto options = std::make_shared<TargetFileOptions>();
  CLI::App* command =
      addCommand(app, "target", "Draw a target to print or engrave and list its points");
  addTargetKindOptions(*command, options->target);
  addOption(*command, "--bed", options->bed,
            "size of the bed: the target goes in its middle unless --origin is given, with a "
            "spacing that suits the bed unless --spacing is")
      .typeName("WxH");
  addPath(*command, "-o,--output", options->output, "the drawing, in millimetres")
      .typeName("SVG")
      .required();
  addPath(*command, "--picture", options->picture, "the same as a picture").typeName("PICTURE");
  addOption(*command, "--pixels-per-mm", options->pixelsPerMm, "resolution of the picture")
      .typeName("N")
      .showDefault();
  addPath(*command, "--points", options->points,
          "the points: PointId,Xw,Yw and their positions in the picture")
      .typeName("CSV");
  setFooter(
      *command,
      "Print at 100 % and check the ruler.\n\nExamples:\n"
      "  fisheye-calibration target --charuco 14x9 --bed 600x400 -o board.svg --points board.csv\n"
      "  fisheye-calibration target --chessboard 8x6 --spacing 39 -o board.svg");
  return {command, [options](const Streams& streams) { return run(*options, streams); }};
}

}  // namespace fisheye_calibration::program
