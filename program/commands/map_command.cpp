#include "commands/map_command.h"

#include <array>
#include <cmath>
#include <istream>
#include <iterator>
#include <optional>
#include <ostream>
#include <string_view>

#include "base/failure.h"
#include "base/record_fields.h"
#include "base/text.h"
#include "checks/checked_camera.h"
#include "commands/option_values.h"
#include "files/csv_table.h"
#include "files/dual_file.h"
#include "fisheye_calibration.h"
#include "geometry/conversions.h"
#include "geometry/record_matrices.h"

namespace fisheye_calibration::program {
namespace {

struct FrameName {
  const char* name;
  ImageFrame frame;
};

constexpr FrameName kFrameNames[] = {{"world", ImageFrame::kWorld},
                                     {"raw", ImageFrame::kRaw},
                                     {"corrected", ImageFrame::kCorrected},
                                     {"second", ImageFrame::kSecond},
                                     {"stitched", ImageFrame::kStitched}};

constexpr Conversion kConversions[] = {{ImageFrame::kWorld, ImageFrame::kRaw, false},
                                       {ImageFrame::kWorld, ImageFrame::kCorrected, true},
                                       {ImageFrame::kWorld, ImageFrame::kSecond, true},
                                       {ImageFrame::kSecond, ImageFrame::kWorld, true},
                                       {ImageFrame::kWorld, ImageFrame::kStitched, false},
                                       {ImageFrame::kStitched, ImageFrame::kWorld, false}};

ImageFrame findFrame(const std::string& option, const std::string& name) {
  for (const FrameName& known : kFrameNames) {
    if (equalIgnoringCase(name, known.name)) {
      return known.frame;
    }
  }
  failBadInput(option + ": world, raw, corrected, second or stitched, not \"" + name + "\"");
}

using Coordinates = std::array<float, 3>;

struct Mapper {
  Conversion conversion;
  FishEyeCalibrationParam param{};
  DualFishEyeCalibrationParam dual{};
  float cx = 0;
  float cy = 0;

  std::array<float, 2> operator()(const Coordinates& p) const {
    float x = 0;
    float y = 0;
    float unused = 0;
    if (conversion.from == ImageFrame::kSecond) {
      CorrectedImageToWorldPoint(p[0], p[1], cx, cy, param, x, y, unused);
    } else if (conversion.from == ImageFrame::kStitched) {
      // Its result is false although x and y are valid.
      static_cast<void>(DualCam_CorrectedImageToWorldPoint(p[0], p[1], dual, x, y, unused));
    } else if (conversion.to == ImageFrame::kStitched) {
      DualCam_WorldToSecondCorrectedImagePoint(p[0], p[1], p[2], dual, x, y);
    } else if (conversion.to == ImageFrame::kRaw) {
      WorldToRawImagePoint(p[0], p[1], p[2], param, x, y);
    } else if (conversion.to == ImageFrame::kCorrected) {
      WorldToCorrectedImagePoint(p[0], p[1], p[2], param, cx, cy, x, y);
    } else {
      WorldToSecondCorrectedImagePoint(p[0], p[1], p[2], param, cx, cy, x, y);
    }
    return {x, y};
  }
};

struct Outcome {
  std::string text;
  bool finite = true;
};

Outcome mapOne(const Mapper& mapper, const Coordinates& point, const std::string& name,
               std::ostream& messages) {
  const auto result = mapper(point);
  const bool finite = std::isfinite(result[0]) && std::isfinite(result[1]);
  if (!finite) {
    messages << name << ": the result is not a finite number\n";
  } else if (mapper.conversion.to == ImageFrame::kRaw ||
             mapper.conversion.to == ImageFrame::kCorrected) {
    const double depth = depthOf(mapper.param, static_cast<double>(point[0]),
                                 static_cast<double>(point[1]), static_cast<double>(point[2]));
    if (!(depth > 0)) {
      messages << "warning: " << name << ": the point lies behind the camera, which sees nothing "
               << "of it\n";
    }
  }
  return {shortest(result[0]) + "," + shortest(result[1]), finite};
}

Coordinates parsePoint(const Mapper& mapper, const std::vector<std::string>& words) {
  const bool world = mapper.conversion.from == ImageFrame::kWorld;
  std::vector<float> values;
  for (const std::string& word : words) {
    const std::optional<float> value = parseFloat(trimmed(word));
    if (!value) {
      failBadInput("point: not a number: \"" + word + "\"");
    }
    values.push_back(*value);
  }
  if (values.size() != 2 && !(world && values.size() == 3)) {
    failBadInput(world ? "point: give Xw Yw, or Xw Yw Zw" : "point: give x y");
  }
  return {values[0], values[1], values.size() == 3 ? values[2] : 0.0f};
}

bool mapTable(const Mapper& mapper, std::istream& in, std::ostream& out, std::ostream& messages) {
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
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
    const Coordinates point = {table.floatAt(row, x), table.floatAt(row, y),
                               z ? table.floatAt(row, *z) : 0.0f};
    if (id) {
      result += std::to_string(table.integerAt(row, *id)) + ",";
    }
    const std::string name = "standard input:" + std::to_string(row.line);
    const Outcome outcome = mapOne(mapper, point, name, messages);
    result += outcome.text + "\n";
    finite = finite && outcome.finite;
  }
  out << result;
  return finite;
}

bool isOfStitched(const Conversion& conversion) {
  return conversion.from == ImageFrame::kStitched || conversion.to == ImageFrame::kStitched;
}

void requireRightRecord(const MapOptions& options, const Conversion& conversion) {
  if (options.camera.empty() == options.dual.empty()) {
    failBadInput("give either --camera, or --dual for a stitched picture");
  }
  if (isOfStitched(conversion) && options.dual.empty()) {
    failBadInput("a stitched picture is described by --dual, not by --camera");
  }
  if (!isOfStitched(conversion) && !options.dual.empty()) {
    failBadInput("--dual gives world to stitched and stitched to world only; " + options.from +
                 " to " + options.to + " needs --camera");
  }
}

void noteRows(const DualFishEyeCalibrationParam& dual, std::ostream& messages) {
  const int offset = pictureRowOffset(dual);
  if (offset == 0) {
    return;
  }
  messages << "note: this picture is a crop; its row from the top is y "
           << (offset < 0 ? "- " : "+ ") << (offset < 0 ? -offset : offset) << "\n";
}

}  // namespace

Conversion findConversion(const std::string& from, const std::string& to) {
  const ImageFrame source = findFrame("--from", from);
  const ImageFrame target = findFrame("--to", to);
  if (source == target) {
    failBadInput("--from and --to name the same frame, " + from);
  }
  for (const Conversion& conversion : kConversions) {
    if (conversion.from == source && conversion.to == target) {
      return conversion;
    }
  }
  std::string message = "the library provides no conversion from " + from + " to " + to;
  if (source == ImageFrame::kStitched || target == ImageFrame::kStitched) {
    message += "; a stitched picture has world to stitched and stitched to world";
  } else if (source == ImageFrame::kSecond) {
    message += "; go from second to world and from there on";
  } else {
    message += "; it has world to raw, corrected and second, and second to world";
  }
  failBadInput(message);
}

int runMap(const MapOptions& options, std::istream& in, std::ostream& out, std::ostream& messages) {
  Mapper mapper{.conversion = findConversion(options.from, options.to)};
  requireRightRecord(options, mapper.conversion);
  if (mapper.conversion.needsCorrectedSize) {
    if (options.correctedSize.empty()) {
      failBadInput(
          "--corrected-size is missing: this conversion counts from the centre of the "
          "corrected picture");
    }
    const Size size = parseSize("--corrected-size", options.correctedSize, 1, kLargestImageSide);
    mapper.cx = static_cast<float>(size.width * 0.5);
    mapper.cy = static_cast<float>(size.height * 0.5);
  }
  std::optional<Coordinates> point;
  if (!options.point.empty()) {
    point = parsePoint(mapper, options.point);
  }
  if (options.dual.empty()) {
    mapper.param = loadCheckedCamera(options.camera, messages);
  } else {
    mapper.dual = loadCheckedDual(options.dual, messages);
    noteRows(mapper.dual, messages);
  }
  if (!point) {
    return mapTable(mapper, in, out, messages) ? kExitOk : kExitJobFailed;
  }
  const Outcome outcome = mapOne(mapper, *point, "point", messages);
  out << outcome.text << "\n";
  return outcome.finite ? kExitOk : kExitJobFailed;
}

}  // namespace fisheye_calibration::program
