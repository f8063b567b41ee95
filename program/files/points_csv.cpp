#include "files/points_csv.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "files/csv_table.h"
#include "files/read_file.h"

namespace fisheye_calibration::program {
namespace {

std::string pointFields(const CalibrationPoint& point) {
  return std::to_string(point.PointId) + "," + shortest(point.Xw) + "," + shortest(point.Yw) + "," +
         fixed(static_cast<double>(point.ImagePtX), 4) + "," +
         fixed(static_cast<double>(point.ImagePtY), 4);
}

constexpr const char* kPointColumns = "PointId,Xw,Yw,ImagePtX,ImagePtY";

}  // namespace

std::vector<CalibrationPoint> parsePoints(const std::string& name, std::string_view text) {
  const CsvTable table = parseCsv(name, text, {"PointId", "Xw", "Yw", "ImagePtX", "ImagePtY"});
  const std::size_t id = table.require("PointId");
  const std::size_t Xw = table.require("Xw");
  const std::size_t Yw = table.require("Yw");
  const std::size_t x = table.require("ImagePtX");
  const std::size_t y = table.require("ImagePtY");
  std::vector<CalibrationPoint> points;
  points.reserve(table.rows.size());
  for (const CsvRow& row : table.rows) {
    points.push_back({.PointId = table.integerAt(row, id),
                      .Xw = table.floatAt(row, Xw),
                      .Yw = table.floatAt(row, Yw),
                      .ImagePtX = table.floatAt(row, x),
                      .ImagePtY = table.floatAt(row, y)});
  }
  if (points.empty()) {
    failBadInput(located(name, table.header.line, 1, "no points after the header"));
  }
  return points;
}

std::vector<CalibrationPoint> readPoints(const std::filesystem::path& path) {
  return parsePoints(nameOf(path), readFile(path));
}

std::string formatPoints(const std::vector<CalibrationPoint>& points) {
  std::string text = std::string(kPointColumns) + "\n";
  for (const CalibrationPoint& point : points) {
    text += pointFields(point) + "\n";
  }
  return text;
}

std::string formatResiduals(const std::vector<CalibrationPoint>& points,
                            const std::vector<std::size_t>& leftOut) {
  std::string text =
      std::string(kPointColumns) + ",ReprojPtX,ReprojPtY,ReprojErrX,ReprojErrY,ReprojErr,LeftOut\n";
  for (std::size_t i = 0; i < points.size(); ++i) {
    const CalibrationPoint& point = points[i];
    const bool isLeftOut = std::find(leftOut.begin(), leftOut.end(), i) != leftOut.end();
    text += pointFields(point) + "," + fixed(point.ReprojPtX, 4) + "," + fixed(point.ReprojPtY, 4) +
            "," + fixed(point.ReprojErrX, 4) + "," + fixed(point.ReprojErrY, 4) + "," +
            fixed(std::hypot(point.ReprojErrX, point.ReprojErrY), 4) +
            (isLeftOut ? ",1\n" : ",0\n");
  }
  return text;
}

}  // namespace fisheye_calibration::program
