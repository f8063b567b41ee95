#include "drawing/target_sheet.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "detection/charuco_board.h"
#include "detection/markers.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kRuler = 100;          // mm
constexpr double kTextHeight = 3;       // mm
constexpr double kLargestIdHeight = 3;  // mm
constexpr double kSmallestMargin = 12;  // mm
constexpr double kFooter = 24;          // mm, below the target and its margin
constexpr double kShareOfBed = 0.85;    // that the advised target takes up
constexpr double kSmallestShare = 0.5;  // of the bed's sides that the points should span

bool isBoard(const Target& target) {
  return target.kind == TargetKind::kChessboard || target.kind == TargetKind::kCharuco;
}

bool isStaggered(const Target& target) { return target.kind == TargetKind::kAsymmetricCircles; }

double discRadius(const Target& target) { return isStaggered(target) ? 0.39 : 0.28; }

// From the target's outline to its first point, steps.
double outline(const Target& target) { return isBoard(target) ? 1 : discRadius(target); }

cv::Size2d pointsInSteps(const Target& target) {
  const double columns = target.columns - 1;
  const double rows = target.rows - 1;
  const double shift = target.rows > 1 ? 1 : 0;
  return isStaggered(target) ? cv::Size2d(2 * columns + shift, rows) : cv::Size2d(columns, rows);
}

cv::Point2d placeInSteps(const Target& target, int column, int row) {
  return isStaggered(target) ? cv::Point2d(2 * column + row % 2, row) : cv::Point2d(column, row);
}

void addSquares(Sheet& sheet, const Target& target, cv::Point2d first, double spacing) {
  for (int r = -1; r < target.rows; ++r) {
    for (int c = -1; c < target.columns; ++c) {
      if ((c + r) % 2 == 0) {
        sheet.rectangles.emplace_back(first.x + c * spacing, first.y + r * spacing, spacing,
                                      spacing);
      }
    }
  }
}

// Black modules next to each other in a row become one rectangle.
void addMarkers(Sheet& sheet, const Target& target, cv::Point2d first, double spacing) {
  const CharucoBoard board(target.columns, target.rows, target.markerShare);
  for (int id = 0; id < board.markerCount(); ++id) {
    const cv::Rect2d area = board.markerArea(id);
    const cv::Mat pattern = markerPattern(target.markerBits, id);
    const double module = area.width * spacing / pattern.cols;
    const cv::Point2d corner = first + area.tl() * spacing;
    for (int y = 0; y < pattern.rows; ++y) {
      const auto* const row = pattern.ptr<unsigned char>(y);
      for (int x = 0; x < pattern.cols;) {
        int end = x;
        while (end < pattern.cols && row[end] == 0) {
          ++end;
        }
        if (end > x) {
          sheet.rectangles.emplace_back(corner.x + x * module, corner.y + y * module,
                                        (end - x) * module, module);
        }
        x = end + 1;
      }
    }
  }
}

void addDiscs(Sheet& sheet, const Target& target, cv::Point2d first, double spacing) {
  for (int r = 0; r < target.rows; ++r) {
    for (int c = 0; c < target.columns; ++c) {
      sheet.discs.push_back(
          {first + placeInSteps(target, c, r) * spacing, discRadius(target) * spacing});
    }
  }
}

double idHeight(double spacing) { return std::min(kLargestIdHeight, 0.5 * spacing); }

// The ids of the first and the last point of every row, outside the target.
void addIds(Sheet& sheet, const Target& target, const std::vector<CalibrationPoint>& points,
            cv::Rect2d area, double spacing) {
  const double height = idHeight(spacing);
  for (int r = 0; r < target.rows; ++r) {
    const CalibrationPoint& left = points[static_cast<std::size_t>(r * target.columns)];
    const CalibrationPoint& right = points[static_cast<std::size_t>((r + 1) * target.columns - 1)];
    const double y = static_cast<double>(left.ImagePtY) + height / 2;
    sheet.texts.push_back(
        {std::to_string(left.PointId), {area.x - height, y}, height, SheetText::Align::kEnd});
    sheet.texts.push_back({std::to_string(right.PointId),
                           {area.br().x + height, y},
                           height,
                           SheetText::Align::kStart});
  }
}

void addRuler(Sheet& sheet, cv::Point2d start) {
  constexpr double kLine = 0.25;  // mm; centred on the position that it marks
  sheet.rectangles.emplace_back(start.x - kLine / 2, start.y - kLine / 2, kRuler + kLine, kLine);
  for (int mm = 0; mm <= static_cast<int>(kRuler); mm += 5) {
    const double length = mm % 50 == 0 ? 5 : mm % 10 == 0 ? 3.5 : 2;
    sheet.rectangles.emplace_back(start.x + mm - kLine / 2, start.y + kLine / 2, kLine,
                                  length - kLine / 2);
  }
  sheet.texts.push_back(
      {"100 mm", start + cv::Point2d(kRuler + 3, 3), kTextHeight, SheetText::Align::kStart});
}

std::string captionOf(const Target& target, const World& world) {
  std::string text = describeTarget(target) + ", spacing " + shortest(world.spacing) + " mm";
  if (target.kind == TargetKind::kCharuco) {
    text += ", markers " + std::to_string(target.markerBits) + "x" +
            std::to_string(target.markerBits) + " of " +
            general(target.markerShare * static_cast<double>(world.spacing), 5) + " mm";
  }
  return text;
}

std::string placeOf(const World& world) {
  return "point " + std::to_string(world.firstId) + " (top left) at (" +
         shortest(world.origin.first) + ", " + shortest(world.origin.second) +
         "); +X runs right, +Y down";
}

}  // namespace

cv::Size2d extentInSteps(const Target& target) {
  const cv::Size2d points = pointsInSteps(target);
  return {points.width + 2 * outline(target), points.height + 2 * outline(target)};
}

TargetSheet layOutTarget(const Target& target, const World& world) {
  const auto spacing = static_cast<double>(world.spacing);
  const cv::Size2d extent = extentInSteps(target) * spacing;
  const std::size_t digits =
      std::to_string(world.firstId + target.columns * target.rows - 1).size();
  const double ids = idHeight(spacing) * (2 + 0.8 * static_cast<double>(digits));
  const double margin = std::max({kSmallestMargin, spacing / 2, ids});
  TargetSheet result;
  Sheet& sheet = result.sheet;
  const std::string caption = captionOf(target, world);
  const std::string place = placeOf(world);
  const double textWidth =
      0.8 * kTextHeight * static_cast<double>(std::max(caption.size(), place.size()));
  sheet.size = {std::max({extent.width, kRuler + 20, textWidth}) + 2 * margin,
                extent.height + 2 * margin + kFooter};
  const cv::Rect2d area((sheet.size.width - extent.width) / 2, margin, extent.width, extent.height);
  const cv::Point2d first = area.tl() + outline(target) * spacing * cv::Point2d(1, 1);
  for (int r = 0; r < target.rows; ++r) {
    for (int c = 0; c < target.columns; ++c) {
      const cv::Point2d steps = placeInSteps(target, c, r);
      const cv::Point2f onBed = world.at(steps);
      const cv::Point2d onSheet = first + steps * spacing;
      result.points.push_back({.PointId = world.firstId + r * target.columns + c,
                               .Xw = onBed.x,
                               .Yw = onBed.y,
                               .ImagePtX = static_cast<float>(onSheet.x),
                               .ImagePtY = static_cast<float>(onSheet.y)});
    }
  }
  if (isBoard(target)) {
    addSquares(sheet, target, first, spacing);
  } else {
    addDiscs(sheet, target, first, spacing);
  }
  if (target.kind == TargetKind::kCharuco) {
    addMarkers(sheet, target, first, spacing);
  }
  addIds(sheet, target, result.points, area, spacing);
  const double below = area.br().y + margin;
  sheet.texts.push_back(
      {caption, {margin, below + kTextHeight}, kTextHeight, SheetText::Align::kStart});
  sheet.texts.push_back(
      {place, {margin, below + 2.8 * kTextHeight}, kTextHeight, SheetText::Align::kStart});
  addRuler(sheet, {margin, below + 12});
  return result;
}

float advisedSpacing(const Target& target, const Size& bed) {
  const cv::Size2d extent = extentInSteps(target);
  const double largest =
      kShareOfBed * std::min(bed.width / extent.width, bed.height / extent.height);
  return static_cast<float>(std::max(0.0, std::floor(largest)));
}

cv::Point2d middleOrigin(const Target& target, double spacing, const Size& bed) {
  const cv::Size2d points = pointsInSteps(target) * spacing;
  return {(bed.width - points.width) / 2, (bed.height - points.height) / 2};
}

std::vector<std::string> adviceFor(const Target& target, const World& world, const Size& bed) {
  const auto spacing = static_cast<double>(world.spacing);
  const cv::Size2d extent = extentInSteps(target) * spacing;
  const cv::Size2d points = pointsInSteps(target) * spacing;
  const float advised = advisedSpacing(target, bed);
  std::vector<std::string> lines;
  if (extent.width > bed.width || extent.height > bed.height) {
    lines.push_back("warning: the target is " + general(extent.width, 5) + " x " +
                    general(extent.height, 5) + " mm and does not fit on the bed" +
                    (advised >= 1 ? "; a spacing of " + shortest(advised) + " mm does" : ""));
    return lines;
  }
  const std::string place = shortest(world.origin.first) + "," + shortest(world.origin.second);
  lines.push_back("lay it down with point " + std::to_string(world.firstId) + " at (" +
                  shortest(world.origin.first) + ", " + shortest(world.origin.second) +
                  ") of the bed and detect with --origin " + place);
  const double rim = outline(target) * spacing;
  const cv::Point2d first(static_cast<double>(world.origin.first),
                          static_cast<double>(world.origin.second));
  if (first.x < rim || first.y < rim || first.x + points.width + rim > bed.width ||
      first.y + points.height + rim > bed.height) {
    lines.emplace_back("warning: there, the target reaches beyond a bed from (0, 0) on");
  }
  const cv::Size2d sheet = layOutTarget(target, world).sheet.size;
  if (sheet.width > bed.width || sheet.height > bed.height) {
    lines.push_back("the sheet is larger than the bed (" + general(sheet.width, 5) + " x " +
                    general(sheet.height, 5) + " mm): cut it around the target");
  }
  lines.push_back("the points span " + general(100 * points.width / bed.width, 2) +
                  " % of the bed's width and " + general(100 * points.height / bed.height, 2) +
                  " % of its height");
  if (points.width < kSmallestShare * bed.width || points.height < kSmallestShare * bed.height) {
    const std::string remedy = advised > world.spacing
                                   ? "a spacing of " + shortest(advised) + " mm suits this bed"
                                   : "take more rows or columns, in the shape of the bed";
    lines.push_back(
        "warning: points that span less than half of the bed determine the rest of it "
        "poorly; " +
        remedy);
  }
  return lines;
}

}  // namespace fisheye_calibration::program
