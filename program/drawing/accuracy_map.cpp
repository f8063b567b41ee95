#include "drawing/accuracy_map.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <string>

#include "base/nice_number.h"
#include "base/text.h"
#include "drawing/primitives.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kLongSide = 1200;  // of the drawn bed, pixels
constexpr int kMargin = 70;         // for the axes
constexpr int kLegendWidth = 340;
constexpr int kLowestHeight = 640;  // for the legend
constexpr double kTextHeight = 15;
constexpr std::size_t kMostLevels = 7;

const cv::Scalar kInk = cv::Scalar::all(40);
const cv::Scalar kFaint = cv::Scalar::all(150);

struct Layout {
  cv::Rect area;  // of the canvas
  cv::Rect2d bed;

  cv::Point2d position(cv::Point2d onBed) const {
    return {area.x + (onBed.x - bed.x) / bed.width * area.width,
            area.y + (onBed.y - bed.y) / bed.height * area.height};
  }
};

// The error at every pixel of the area: the grid's values, interpolated.
cv::Mat1d errorsPerPixel(const AccuracyMap& map, const cv::Size& size) {
  const cv::Mat1d values(map.grid.rows, map.grid.columns, const_cast<double*>(map.errors.data()));
  cv::Mat1d result(size);
  for (int row = 0; row < size.height; ++row) {
    const double v = (map.grid.rows - 1) * (row + 0.5) / size.height;
    const int r = std::min(static_cast<int>(v), map.grid.rows - 2);
    for (int column = 0; column < size.width; ++column) {
      const double u = (map.grid.columns - 1) * (column + 0.5) / size.width;
      const int c = std::min(static_cast<int>(u), map.grid.columns - 2);
      const double upper = values(r, c) + (u - c) * (values(r, c + 1) - values(r, c));
      const double lower = values(r + 1, c) + (u - c) * (values(r + 1, c + 1) - values(r + 1, c));
      result(row, column) = upper + (v - r) * (lower - upper);
    }
  }
  return result;
}

// Transparent where the error is not a number.
cv::Mat4b coloursOf(const cv::Mat1d& errors, const std::vector<double>& levels) {
  cv::Mat1b shares(errors.size(), 0);
  cv::Mat1b seen(errors.size(), 0);
  for (int row = 0; row < errors.rows; ++row) {
    for (int column = 0; column < errors.cols; ++column) {
      if (!std::isnan(errors(row, column))) {
        seen(row, column) = 255;
        shares(row, column) =
            cv::saturate_cast<unsigned char>(255 * (1 - levelShare(errors(row, column), levels)));
      }
    }
  }
  cv::Mat colours;
  cv::applyColorMap(shares, colours, cv::COLORMAP_CIVIDIS);
  cv::Mat4b result;
  cv::cvtColor(colours, result, cv::COLOR_BGR2BGRA);
  cv::insertChannel(seen, result, 3);
  return result;
}

void drawContours(cv::Mat& canvas, const Layout& layout, const cv::Mat1d& errors,
                  const std::vector<double>& levels) {
  cv::Mat inside = canvas(layout.area);
  for (const double level : levels) {
    // NaN is neither at nor above a level.
    cv::Mat above;
    cv::compare(errors, level, above, cv::CMP_GE);
    std::vector<std::vector<cv::Point>> outlines;
    cv::findContours(above, outlines, cv::RETR_LIST, cv::CHAIN_APPROX_NONE);
    for (const auto& outline : outlines) {
      std::vector<cv::Point> run;
      for (const cv::Point& point : outline) {
        const bool onEdge = point.x == 0 || point.y == 0 || point.x == errors.cols - 1 ||
                            point.y == errors.rows - 1 ||
                            !cv::checkRange(errors(cv::Rect(point.x - 1, point.y - 1, 3, 3)));
        if (!onEdge) {
          cv::circle(inside, point, 1, kInk, cv::FILLED, cv::LINE_AA);
          run.push_back(point);
        }
      }
      if (run.size() > 60) {
        drawTextWithRim(inside, roundedToTwo(level), run[run.size() / 2], kTextHeight, kInk,
                        Anchor::kCentre);
      }
    }
  }
}

void drawAxes(cv::Mat& canvas, const Layout& layout) {
  cv::rectangle(canvas, layout.area, kFaint, 1);
  const double step = niceAbove(std::max(layout.bed.width, layout.bed.height) / 10);
  for (double X = std::ceil(layout.bed.x / step) * step; X <= layout.bed.br().x; X += step) {
    const cv::Point2d at = layout.position({X, layout.bed.br().y});
    drawLine(canvas, at, at + cv::Point2d(0, 6), kInk, 1);
    drawText(canvas, general(X + 0.0, 6), at + cv::Point2d(0, 26), kTextHeight, kInk,
             Anchor::kCentre);
  }
  for (double Y = std::ceil(layout.bed.y / step) * step; Y <= layout.bed.br().y; Y += step) {
    const cv::Point2d at = layout.position({layout.bed.x, Y});
    drawLine(canvas, at, at - cv::Point2d(6, 0), kInk, 1);
    drawText(canvas, general(Y + 0.0, 6), at + cv::Point2d(-10, kTextHeight / 2), kTextHeight, kInk,
             Anchor::kRight);
  }
}

void drawTarget(cv::Mat& canvas, const Layout& layout, const AccuracyMap& map) {
  for (const cv::Point2d& point : map.target) {
    const cv::Point2d at = layout.position(point);
    if (layout.area.contains(cv::Point(at))) {
      drawDisc(canvas, at, 4, cv::Scalar::all(255));
      drawDisc(canvas, at, 2.5, kInk);
    }
  }
}

void drawLegend(cv::Mat& canvas, const Layout& layout, const AccuracyMap& map,
                const std::vector<double>& levels) {
  const double left = layout.area.br().x + 30;
  double y = layout.area.y + 20;
  const auto line = [&](const std::string& text, double height, double advance) {
    drawText(canvas, text, {left, y}, height, kInk);
    y += advance;
  };
  line("Bed error (95 %)", 19, 40);
  line("inside the target " + roundedToTwo(map.insideTarget) + " mm", kTextHeight, 28);
  line("on the bed " + roundedToTwo(map.onBed) + " mm", kTextHeight, 50);
  constexpr int kSteps = 280;
  const cv::Mat colours = accuracyScale({34, kSteps});
  colours.copyTo(
      canvas(cv::Rect(static_cast<int>(left), static_cast<int>(y), colours.cols, colours.rows)));
  for (const double level : levels) {
    const double at = y + (1 - levelShare(level, levels)) * (kSteps - 1);
    drawLine(canvas, {left + 34, at}, {left + 42, at}, kInk, 1);
    drawText(canvas, roundedToTwo(level) + " mm", {left + 50, at + kTextHeight / 2}, kTextHeight,
             kInk);
  }
  y += kSteps + 40;
  drawDisc(canvas, {left + 6, y - 6}, 2.5, kInk);
  drawText(canvas, "target point", {left + 22, y}, kTextHeight, kInk);
}

}  // namespace

std::vector<double> contourLevels(const std::vector<double>& errors) {
  double least = std::numeric_limits<double>::infinity();
  for (const double error : errors) {
    if (error > 0) {
      least = std::min(least, error);
    }
  }
  const double most = largestOf(errors);
  std::vector<double> levels;
  if (!(most > 0) || !std::isfinite(most)) {
    return levels;
  }
  double level = niceBelow(most);
  while (levels.size() < kMostLevels && level >= least) {
    levels.insert(levels.begin(), level);
    level = niceBelow(level * 0.99);
  }
  if (levels.empty()) {
    levels.push_back(niceBelow(most));
  }
  return levels;
}

double levelShare(double error, const std::vector<double>& levels) {
  const double first = std::log(levels.front() / 2);
  const double last = std::log(levels.back() * 2);
  return std::clamp((std::log(error) - first) / (last - first), 0.0, 1.0);
}

cv::Mat accuracyColours(const AccuracyMap& map, const cv::Size& size) {
  const std::vector<double> levels = contourLevels(map.errors);
  if (levels.empty()) {
    return cv::Mat4b(size, cv::Vec4b());
  }
  return coloursOf(errorsPerPixel(map, size), levels);
}

cv::Mat accuracyScale(const cv::Size& size) {
  cv::Mat1b shares(size);
  for (int i = 0; i < size.height; ++i) {
    shares.row(i) = cv::saturate_cast<unsigned char>(255.0 * i / (size.height - 1));
  }
  cv::Mat colours;
  cv::applyColorMap(shares, colours, cv::COLORMAP_CIVIDIS);
  return colours;
}

cv::Mat drawAccuracyMap(const AccuracyMap& map) {
  const cv::Rect2d& bed = map.grid.area;
  const double scale = kLongSide / std::max(bed.width, bed.height);
  Layout layout{.area = {}, .bed = bed};
  layout.area = {kMargin, 40, std::max(1, static_cast<int>(std::lround(bed.width * scale))),
                 std::max(1, static_cast<int>(std::lround(bed.height * scale)))};
  cv::Mat canvas(std::max(layout.area.br().y + kMargin, kLowestHeight),
                 layout.area.br().x + kLegendWidth, CV_8UC3, cv::Scalar::all(255));
  const std::vector<double> levels = contourLevels(map.errors);
  if (!levels.empty()) {
    const cv::Mat1d errors = errorsPerPixel(map, layout.area.size());
    cv::Mat4b colours = coloursOf(errors, levels);
    cv::Mat seen;
    cv::extractChannel(colours, seen, 3);
    cv::Mat opaque;
    cv::cvtColor(colours, opaque, cv::COLOR_BGRA2BGR);
    opaque.copyTo(canvas(layout.area), seen);
    drawContours(canvas, layout, errors, levels);
    drawLegend(canvas, layout, map, levels);
  }
  drawTarget(canvas, layout, map);
  drawAxes(canvas, layout);
  return canvas;
}

}  // namespace fisheye_calibration::program
