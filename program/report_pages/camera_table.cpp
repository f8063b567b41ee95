#include "report_pages/camera_table.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string_view>

#include "base/record_fields.h"
#include "base/text.h"
#include "html/markup.h"
#include "html/table.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kDeviations = 1.96;  // of the normal distribution: 95 %

// The fields in the order of the solver's covariance. The rotation vector's covariance is that of
// the pose, whose vector the record repeats.
constexpr std::array<std::string_view, 12> kSolved = {"fx", "fy", "u0", "v0", "k0", "k1",
                                                      "Rx", "Ry", "Rz", "Tx", "Ty", "Tz"};

std::optional<double> intervalOf(const CalibrationReport& report, std::string_view name) {
  if (!isSolved(report.robust)) {
    return std::nullopt;
  }
  for (int i = 0; i < static_cast<int>(kSolved.size()); ++i) {
    if (kSolved[static_cast<std::size_t>(i)] == name) {
      const double half = kDeviations * std::sqrt(report.robust.bed.covariance(i, i));
      return std::isfinite(half) ? std::optional(half) : std::nullopt;
    }
  }
  return std::nullopt;
}

bool isRowOfMatrixOrFiller(std::string_view name) {
  const bool numbered = name.size() == 2 && name[1] >= '1' && name[1] <= '9';
  return numbered && (name[0] == 'R' || name[0] == 'p' || (name[0] == 'k' && name[1] >= '2'));
}

}  // namespace

std::string cameraTable(const CalibrationReport& report) {
  Table table{
      .caption =
          "The camera file's values; the true ones lie within the interval with at least 95 % "
          "confidence",
      .columns = {{"Name"}, {"Value", true}, {"\xC2\xB1 95 %", true}, {"Unit"}, {"Meaning"}},
      .rows = {},
      .name = "camera"};
  for (const RecordField& field : recordFields()) {
    if (isRowOfMatrixOrFiller(field.name)) {
      continue;
    }
    const std::string_view unit = field.unit;
    const double value = field.value(report.chosen.result.param);
    Cell cell = numberCell(value, unit == "px" || unit == "mm" ? 3 : 6);
    Cell half{"-"};
    if (const std::optional<double> interval = intervalOf(report, field.name)) {
      half = {*interval > 0 ? general(*interval, 2) : "kept", *interval};
    }
    table.rows.push_back({{field.name}, cell, half, {field.unit}, {field.meaning}});
  }
  std::string markup = tableMarkup(table);
  if (report.chosen.fromLibrary) {
    markup += textElement(
        "p", {{"class", "note"}},
        "The values are those of SingleCamCalibration; the intervals are those of the robust "
        "solver for the same points.");
  }
  return markup;
}

}  // namespace fisheye_calibration::program
