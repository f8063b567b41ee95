#include "commands/drawn_items.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "base/failure.h"
#include "base/text.h"
#include "drawing/sheet.h"
#include "drawing/target_sheet.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kPixelsPerUnit = 6;
constexpr double kMostPixels = 12000;  // a side
constexpr int kMostMarks = 10000;

// A drawing in black on white, in these two grey levels instead, with its first corner at `corner`.
PlacedPicture placedSheet(const Sheet& sheet, cv::Point2d corner, int dark, int bright) {
  const double scale =
      std::min(kPixelsPerUnit, kMostPixels / std::max(sheet.size.width, sheet.size.height));
  cv::Mat picture = sheetAsPicture(sheet, scale);
  picture.convertTo(picture, CV_8U, (bright - dark) / 255.0, dark);
  // Whole pixels: the last ones may reach beyond the sheet.
  return {picture, cv::Rect2d(corner, cv::Size2d(picture.cols / scale, picture.rows / scale))};
}

}  // namespace

SceneItem drawnTarget(const TargetOptions& options) {
  const Target target = parseTarget(options);
  const World world = parseWorld(options, target.columns * target.rows);
  const TargetSheet sheet = layOutTarget(target, world);
  const CalibrationPoint& first = sheet.points.front();
  const cv::Point2d corner(static_cast<double>(first.Xw) - static_cast<double>(first.ImagePtX),
                           static_cast<double>(first.Yw) - static_cast<double>(first.ImagePtY));
  constexpr int kInk = 28;
  constexpr int kPaper = 228;
  SceneItem item = {.picture = placedSheet(sheet.sheet, corner, kInk, kPaper)};
  item.points = sheet.points;
  return item;
}

SceneItem drawnMarks(const cv::Rect2d& bed, double spacing) {
  constexpr double kArm = 6;
  constexpr double kLine = 0.6;
  Sheet sheet;
  sheet.size = bed.size();
  std::vector<CalibrationPoint> points;
  const auto columns = static_cast<int>(std::min(1e6, std::ceil(bed.width / spacing)));
  const auto rows = static_cast<int>(std::min(1e6, std::ceil(bed.height / spacing)));
  if (static_cast<double>(columns) * rows > kMostMarks) {
    failBadInput("marks: the spacing is too small for this bed");
  }
  for (int row = 1; row < rows; ++row) {
    for (int column = 1; column < columns; ++column) {
      const cv::Point2d at(column * spacing, row * spacing);
      const cv::Point2d world = bed.tl() + at;
      sheet.rectangles.emplace_back(at.x - kArm, at.y - kLine / 2, 2 * kArm, kLine);
      sheet.rectangles.emplace_back(at.x - kLine / 2, at.y - kArm, kLine, kArm - kLine / 2);
      sheet.rectangles.emplace_back(at.x - kLine / 2, at.y + kLine / 2, kLine, kArm - kLine / 2);
      sheet.texts.push_back({general(world.x, 6) + "," + general(world.y, 6),
                             at + cv::Point2d(2, -2), 3, SheetText::Align::kStart});
      points.push_back({.PointId = static_cast<int>(points.size()) + 1,
                        .Xw = static_cast<float>(world.x),
                        .Yw = static_cast<float>(world.y)});
    }
  }
  constexpr int kBurnt = 60;
  constexpr int kWood = 175;
  SceneItem item = {.picture = placedSheet(sheet, bed.tl(), kBurnt, kWood)};
  item.points = points;
  return item;
}

}  // namespace fisheye_calibration::program
