#include "commands/map_command.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstddef>
#include <istream>
#include <iterator>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/text.h"
#include "checks/checked_camera.h"
#include "commands/map_conversion.h"
#include "commands/option_values.h"
#include "files/csv_table.h"
#include "files/dual_file.h"
#include "fisheye_calibration.h"
#include "geometry/conversions.h"
#include "geometry/record_matrices.h"

namespace fisheye_calibration::program {
namespace {

struct Options {
  std::filesystem::path camera;  // for conversions of one camera
  std::filesystem::path dual;    // for those of a stitched picture
  std::string from;
  std::string to;
  std::string correctedSize;
  bool force = false;
  std::vector<std::string> point;  // coordinates; empty: a CSV on standard input
};

// A point in the world, or a position in a picture with z = 0.
using Coordinates = cv::Point3f;

struct Mapper {
  Conversion conversion;
  FishEyeCalibrationParam param{};
  DualFishEyeCalibrationParam dual{};
  cv::Point2f centre;  // of the corrected picture

  cv::Point2f operator()(const Coordinates& p) const {
    const cv::Point2f position(p.x, p.y);
    if (conversion.from == ImageFrame::kSecond) {
      return bedPositionAt(param, position, centre);
    }
    if (conversion.from == ImageFrame::kStitched) {
      return bedPositionAt(dual, position);
    }
    if (conversion.to == ImageFrame::kStitched) {
      return stitchedPosition(dual, position, p.z);
    }
    if (conversion.to == ImageFrame::kRaw) {
      return rawPosition(param, position, p.z);
    }
    if (conversion.to == ImageFrame::kCorrected) {
      return correctedPosition(param, position, centre, p.z);
    }
    return secondCorrectedPosition(param, position, centre, p.z);
  }
};

struct Outcome {
  std::string text;
  bool finite = true;
};

Outcome mapOne(const Mapper& mapper, const Coordinates& point, const std::string& name,
               std::ostream& messages) {
  const cv::Point2f result = mapper(point);
  const bool finite = std::isfinite(result.x) && std::isfinite(result.y);
  const ImageFrame to = mapper.conversion.to;
  if (!finite) {
    messages << name << ": the result is not a finite number\n";
  } else if ((to == ImageFrame::kRaw || to == ImageFrame::kCorrected) &&
             !(depthOf(mapper.param, point.x, point.y, point.z) > 0)) {
    messages << "warning: " << name << ": the point lies behind the camera, which sees nothing "
             << "of it\n";
  }
  return {.text = shortest(result.x) + "," + shortest(result.y), .finite = finite};
}

Coordinates parsePoint(const Conversion& conversion, const std::vector<std::string>& words) {
  const bool world = conversion.from == ImageFrame::kWorld;
  std::vector<float> values;
  for (const std::string& word : words) {
    const std::optional<float> value = parseFloat(trimmed(word));
    if (!value) {
      failBadInput("point: not a number: " + inQuotes(word));
    }
    values.push_back(*value);
  }
  if (values.size() != 2 && !(world && values.size() == 3)) {
    failBadInput(world ? "point: give Xw Yw, or Xw Yw Zw" : "point: give x y");
  }
  return {values[0], values[1], values.size() == 3 ? values[2] : 0.0f};
}

bool mapTable(const Mapper& mapper, const Streams& streams) {
  const std::string text((std::istreambuf_iterator<char>(streams.in)),
                         std::istreambuf_iterator<char>());
  const CsvTable table = parseCsv("standard input", text);
  const bool fromWorld = mapper.conversion.from == ImageFrame::kWorld;
  const std::size_t x = table.require(fromWorld ? "Xw" : "x");
  const std::size_t y = table.require(fromWorld ? "Yw" : "y");
  const std::optional<std::size_t> z = fromWorld ? table.find("Zw") : std::nullopt;
  const std::optional<std::size_t> id = table.find("PointId");
  std::string result = id ? "PointId," : "";
  result += mapper.conversion.to == ImageFrame::kWorld ? "Xw,Yw\n" : "x,y\n";
  bool finite = true;
  for (const CsvRow& row : table.rows) {
    const Coordinates point{table.floatAt(row, x), table.floatAt(row, y),
                            z ? table.floatAt(row, *z) : 0.0f};
    if (id) {
      result += std::to_string(table.integerAt(row, *id)) + ",";
    }
    const std::string name = "standard input:" + std::to_string(row.line);
    const Outcome outcome = mapOne(mapper, point, name, streams.messages);
    result += outcome.text + "\n";
    finite = finite && outcome.finite;
  }
  streams.out << result;
  return finite;
}

void requireRightRecord(const Options& options, const Conversion& conversion) {
  if (options.camera.empty() == options.dual.empty()) {
    failBadInput("give either --camera, or --dual for a stitched picture");
  }
  if (conversion.isOfStitched() && options.dual.empty()) {
    failBadInput("a stitched picture is described by --dual, not by --camera");
  }
  if (!conversion.isOfStitched() && !options.dual.empty()) {
    failBadInput("--dual gives world to stitched and stitched to world only; " + options.from +
                 " to " + options.to + " needs --camera");
  }
}

Size correctedSize(const Options& options) {
  if (options.correctedSize.empty()) {
    failBadInput(
        "--corrected-size is missing: this conversion counts from the centre of the corrected "
        "picture");
  }
  return parseImageSize("--corrected-size", options.correctedSize);
}

void noteRows(const DualFishEyeCalibrationParam& dual, std::ostream& messages) {
  const int offset = pictureRowOffset(dual);
  if (offset != 0) {
    messages << "note: this picture is a crop; its row from the top is y" << signedTerm(offset)
             << "\n";
  }
}

int run(const Options& options, const Streams& streams) {
  Mapper mapper = {.conversion = findConversion(options.from, options.to)};
  requireRightRecord(options, mapper.conversion);
  std::optional<Size> corrected;
  if (mapper.conversion.needsCorrectedSize) {
    corrected = correctedSize(options);
    mapper.centre = centreOf(*corrected);
  }
  std::optional<Coordinates> point;
  if (!options.point.empty()) {
    point = parsePoint(mapper.conversion, options.point);
  }
  if (options.dual.empty()) {
    mapper.param = loadCheckedCamera(options.camera, options.force, streams.messages);
    if (corrected) {
      requireFittingSize(mapper.param, options.camera, *corrected, options.force, streams.messages);
    }
  } else {
    mapper.dual = loadCheckedDual(options.dual, options.force, streams.messages);
    noteRows(mapper.dual, streams.messages);
  }
  if (!point) {
    return mapTable(mapper, streams) ? kExitOk : kExitJobFailed;
  }
  const Outcome outcome = mapOne(mapper, *point, "point", streams.messages);
  streams.out << outcome.text << "\n";
  return outcome.finite ? kExitOk : kExitJobFailed;
}

}  // namespace

Command addMapCommand(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand(
      "map", "Carry points between the frames of a camera or a stitched picture");
  addPath(*command, "--camera", options->camera, "the camera's parameter file")->type_name("INI");
  addPath(*command, "--dual", options->dual,
          "instead of it, the parameter file of a stitched picture")
      ->type_name("INI");
  command->add_option("--from", options->from, "world, second or stitched")
      ->type_name("FRAME")
      ->required();
  command->add_option("--to", options->to, "raw, corrected, second, stitched or world")
      ->type_name("FRAME")
      ->required();
  command
      ->add_option("--corrected-size", options->correctedSize,
                   "size of the corrected picture; not needed for world to raw")
      ->type_name("WxH");
  addForce(*command, options->force);
  command
      ->add_option("point", options->point,
                   "Xw Yw [Zw] in the world, or x y in a picture; without it, a CSV with a header "
                   "(Xw,Yw[,Zw] or x,y, PointId is kept) is read from standard input")
      ->type_name("NUMBER");
  command->footer(
      "The library converts world to raw, corrected and second, and second to world (on the bed); "
      "with --dual, world to stitched and back. In a stitched picture y is the row from the top; "
      "for a crop a note says what to add to it.\n"
      "\nExamples:\n"
      "  fisheye-calibration map --camera camera.ini --from world --to raw 120 -80.5\n"
      "  fisheye-calibration map --camera camera.ini --from second --to world "
      "--corrected-size 1920x1208 < pixels.csv\n"
      "  fisheye-calibration map --dual dual.ini --from stitched --to world 812 440");
  return {command, [options](const Streams& streams) { return run(*options, streams); }};
}

}  // namespace fisheye_calibration::program
