#include "commands/map_command.h"

#include <cstddef>
#include <filesystem>
#include <istream>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "checks/checked_camera.h"
#include "commands/declared_options.h"
#include "commands/map_conversion.h"
#include "commands/option_values.h"
#include "commands/point_mapper.h"
#include "files/csv_table.h"
#include "files/dual_file.h"
#include "files/read_file.h"
#include "fisheye_calibration.h"
#include "geometry/conversions.h"

namespace fisheye_calibration::program {
namespace {

struct MapOptions {
  std::vector<std::filesystem::path> cameras;  // for conversions of cameras
  std::filesystem::path dual;                  // for those of a stitched picture
  std::string from;
  std::string to;
  std::string correctedSize;
  bool force = false;
  std::vector<std::string> point;  // coordinates; empty: a CSV on standard input
};

using Coordinates = cv::Point3f;

// What maps, with a name for messages if there are several.
struct NamedMapper {
  std::string name;
  PointMapper map;
};

struct Task {
  Conversion conversion;
  std::vector<NamedMapper> mappers;  // their results follow each other
};

struct Outcome {
  std::string text;
  bool complete = true;
};

Outcome mapOne(const Task& task, const Coordinates& point, const std::string& name,
               std::ostream& messages) {
  Outcome outcome;
  for (const NamedMapper& mapper : task.mappers) {
    const MappedPoint mapped = mapper.map(point);
    const std::string where = name + ": " + (mapper.name.empty() ? "" : mapper.name + ": ");
    if (!outcome.text.empty()) {
      outcome.text += ",";
    }
    if (!mapped.refusal.empty()) {
      messages << where << mapped.refusal << "\n";
      outcome.text += "nan,nan";
      outcome.complete = false;
      continue;
    }
    if (mapped.behindCamera) {
      messages << "warning: " << where
               << "the point lies behind the camera, which sees nothing of it\n";
    }
    outcome.text += shortest(mapped.position.x) + "," + shortest(mapped.position.y);
  }
  return outcome;
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

// "x,y", or "x1,y1,x2,y2" for two cameras.
std::string resultHeader(const Task& task) {
  if (task.conversion.to == ImageFrame::kWorld) {
    return "Xw,Yw\n";
  }
  if (task.mappers.size() == 1) {
    return "x,y\n";
  }
  std::vector<std::string> names;
  for (std::size_t i = 1; i <= task.mappers.size(); ++i) {
    const std::string number = std::to_string(i);
    names.push_back(std::string("x").append(number).append(",y").append(number));
  }
  return joined(names, ",") + "\n";
}

bool mapTable(const Task& task, const Streams& streams) {
  const std::string text = readStream(streams.in, "standard input");
  const bool fromWorld = task.conversion.from == ImageFrame::kWorld;
  const std::string xName = fromWorld ? "Xw" : "x";
  const std::string yName = fromWorld ? "Yw" : "y";
  const CsvTable table = parseCsv("standard input", text, {xName, yName});
  const std::size_t x = table.require(xName);
  const std::size_t y = table.require(yName);
  const std::optional<std::size_t> z = fromWorld ? table.find("Zw") : std::nullopt;
  const std::optional<std::size_t> id = table.find("PointId");
  std::string result = (id ? "PointId," : "") + resultHeader(task);
  bool complete = true;
  for (const CsvRow& row : table.rows) {
    const Coordinates point{table.floatAt(row, x), table.floatAt(row, y),
                            z ? table.floatAt(row, *z) : 0.0f};
    if (id) {
      result += std::to_string(table.integerAt(row, *id)) + ",";
    }
    const std::string name = "standard input:" + std::to_string(row.line);
    const Outcome outcome = mapOne(task, point, name, streams.messages);
    result += outcome.text + "\n";
    complete = complete && outcome.complete;
  }
  streams.out << result;
  return complete;
}

void requireRightRecord(const MapOptions& options, const Conversion& conversion) {
  if (options.cameras.empty() == options.dual.empty()) {
    failBadInput("give either --camera, or --dual for a stitched picture");
  }
  if (conversion.isOfStitched() && options.dual.empty()) {
    failBadInput("a stitched picture is described by --dual, not by --camera");
  }
  if (!conversion.isOfStitched() && !options.dual.empty()) {
    failBadInput("--dual gives world to stitched and stitched to world only; " + options.from +
                 " to " + options.to + " needs --camera");
  }
  const bool worldToRaw =
      conversion.from == ImageFrame::kWorld && conversion.to == ImageFrame::kRaw;
  if (options.cameras.size() > 1 && !worldToRaw) {
    failBadInput("several cameras go with world to raw only");
  }
}

// The corrected picture's, from the command line or from the camera's file.
Size correctedSize(const std::optional<Size>& wished, const CheckedCamera& loaded,
                   const std::filesystem::path& camera, bool force, std::ostream& messages) {
  if (!wished && !loaded.corrected) {
    failBadInput(
        "--corrected-size is missing: this conversion counts from the centre of the corrected "
        "picture, and " +
        nameOf(camera) + " does not note its size");
  }
  const Size size = wished.value_or(loaded.corrected.value_or(Size()));
  requireFittingSize(loaded, camera, size, force, messages);
  return size;
}

void noteRows(const DualFishEyeCalibrationParam& dual, std::ostream& messages) {
  const int offset = pictureRowOffset(dual);
  if (offset != 0) {
    messages << "note: this picture is a crop; its row from the top is y" << signedTerm(offset)
             << "\n";
  }
}

std::vector<NamedMapper> mappersOf(const MapOptions& options, const Conversion& conversion,
                                   std::ostream& messages) {
  std::optional<Size> wished;
  if (!options.correctedSize.empty()) {
    wished = parseImageSize("--corrected-size", options.correctedSize);
  }
  if (!options.dual.empty()) {
    const auto dual = loadCheckedDual(options.dual, options.force, messages);
    noteRows(dual, messages);
    return {{.name = "", .map = mapperFor(conversion, dual)}};
  }
  std::vector<NamedMapper> mappers;
  for (const std::filesystem::path& camera : options.cameras) {
    const CheckedCamera loaded = loadCheckedCamera(camera, options.force, messages);
    Size corrected;
    if (conversion.needsCorrectedSize) {
      corrected = correctedSize(wished, loaded, camera, options.force, messages);
    }
    mappers.push_back({.name = options.cameras.size() > 1 ? nameOf(camera) : "",
                       .map = mapperFor(conversion, loaded.param, corrected)});
  }
  return mappers;
}

int run(const MapOptions& options, const Streams& streams) {
  const Conversion conversion = findConversion(options.from, options.to);
  requireRightRecord(options, conversion);
  std::optional<Coordinates> point;
  if (!options.point.empty()) {
    point = parsePoint(conversion, options.point);
  }
  const Task task = {.conversion = conversion,
                     .mappers = mappersOf(options, conversion, streams.messages)};
  if (!point) {
    return mapTable(task, streams) ? kExitOk : kExitJobFailed;
  }
  const Outcome outcome = mapOne(task, *point, "point", streams.messages);
  if (outcome.complete || task.mappers.size() > 1) {
    streams.out << outcome.text << "\n";
  }
  return outcome.complete ? kExitOk : kExitJobFailed;
}

}  // namespace

Command addMapCommand(CLI::App& app) {
  const auto options = std::make_shared<MapOptions>();
  CLI::App* command =
      addCommand(app, "map", "Carry points between the frames of a camera or a stitched picture");
  addPaths(*command, "--camera", options->cameras,
           "the camera's parameter file; for world to raw, those of several cameras")
      .typeName("INI")
      .oneValueEachTime();
  addPath(*command, "--dual", options->dual,
          "instead of it, the parameter file of a stitched picture")
      .typeName("INI");
  addOption(*command, "--from", options->from, "world, raw, second or stitched")
      .typeName("FRAME")
      .required();
  addOption(*command, "--to", options->to, "raw, corrected, second, stitched or world")
      .typeName("FRAME")
      .required();
  addOption(*command, "--corrected-size", options->correctedSize,
            "size of the corrected picture, for corrected and second (default: the one that "
            "the camera's file notes)")
      .typeName("WxH");
  addForce(*command, options->force);
  addOption(*command, "point", options->point,
            "Xw Yw [Zw] in the world, or x y in a picture; without it, a CSV with a header "
            "(Xw,Yw[,Zw] or x,y, PointId is kept) is read from standard input")
      .typeName("NUMBER");
  setFooter(
      *command,
      "World goes to raw, corrected and second; raw to world (on the bed), corrected and second; "
      "second to world. With --dual, world goes to stitched and back. In a stitched picture y is "
      "the row from the top; for a crop a note says what to add to it.\n"
      "\nExamples:\n"
      "  fisheye-calibration map --camera camera.ini --from world --to raw 120 -80.5\n"
      "  fisheye-calibration map --camera left.ini --camera right.ini --from world --to raw 120 "
      "80\n"
      "  fisheye-calibration map --camera camera.ini --from raw --to world 812.5 440\n"
      "  fisheye-calibration map --camera camera.ini --from second --to world "
      "--corrected-size 1920x1208 < pixels.csv\n"
      "  fisheye-calibration map --dual dual.ini --from stitched --to world 812 440");
  return {command, [options](const Streams& streams) { return run(*options, streams); }, true};
}

}  // namespace fisheye_calibration::program
