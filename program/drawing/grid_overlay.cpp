#include "drawing/grid_overlay.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "base/failure.h"
#include "base/text.h"
#include "drawing/primitives.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kClosestLines = 4;  // pixels

template <typename Position>
std::vector<GridLine> linesBetween(double a, double b, double spacing, Position position) {
  std::vector<GridLine> lines;
  const double first = std::ceil(std::min(a, b) / spacing);
  const double last = std::floor(std::max(a, b) / spacing);
  for (double k = first; k <= last; ++k) {
    lines.push_back({k * spacing, position(k * spacing)});
  }
  return lines;
}

}  // namespace

Grid gridOver(const MetricPicture& picture, double spacing) {
  const double pixel = picture.pixel;
  if (!(pixel > 0) || !std::isfinite(pixel)) {
    failBadInput("--grid: the camera's Pixel is " + general(pixel, 9) +
                 ", so nothing is known of the bed's scale");
  }
  if (spacing / pixel < kClosestLines) {
    failBadInput("--grid: lines every " + general(spacing, 6) + " would lie only " +
                 general(spacing / pixel, 3) + " px apart; give at least " +
                 general(kClosestLines * pixel, 3));
  }
  // Pixel centres have whole coordinates, so the picture extends half a pixel beyond them.
  const cv::Point2d topLeft = picture.bedAt({-0.5, -0.5});
  const cv::Point2d bottomRight =
      picture.bedAt({picture.size.width - 0.5, picture.size.height - 0.5});
  Grid grid;
  grid.columns = linesBetween(topLeft.x, bottomRight.x, spacing, [&](double Xw) {
    return picture.positionOf({Xw, topLeft.y}).x;
  });
  grid.rows = linesBetween(topLeft.y, bottomRight.y, spacing, [&](double Yw) {
    return picture.positionOf({topLeft.x, Yw}).y;
  });
  return grid;
}

void drawGrid(cv::Mat& picture, const Grid& grid) {
  const bool grey = picture.channels() == 1;
  const int shorter = std::min(picture.cols, picture.rows);
  const int thickness = std::max(1, shorter / 900);
  const double letters = std::clamp(shorter / 60.0, 8.0, 24.0);
  const cv::Scalar colour = grey ? cv::Scalar(0) : cv::Scalar(0, 90, 230);
  const auto line = [&](cv::Point2d from, cv::Point2d to) {
    if (grey) {
      drawLine(picture, from, to, cv::Scalar(255), thickness + 2);  // to be readable on black
    }
    drawLine(picture, from, to, colour, thickness);
  };
  for (const GridLine& at : grid.columns) {
    line({at.pixel, -1}, {at.pixel, static_cast<double>(picture.rows)});
  }
  for (const GridLine& at : grid.rows) {
    line({-1, at.pixel}, {static_cast<double>(picture.cols), at.pixel});
  }
  double free = 0;  // where there is room for the next label
  for (const GridLine& at : grid.columns) {
    const std::string label = general(at.world + 0.0, 6);
    if (at.pixel + 3 < free) {
      continue;
    }
    drawTextWithRim(picture, label, {at.pixel + 3, letters + 4}, letters, colour);
    free = at.pixel + 3 + textWidth(label, letters) + letters;
  }
  free = 2.5 * letters;  // below the row of the columns' labels
  for (const GridLine& at : grid.rows) {
    if (at.pixel - letters < free) {
      continue;
    }
    drawTextWithRim(picture, general(at.world + 0.0, 6), {4, at.pixel - 3}, letters, colour);
    free = at.pixel + 0.5 * letters;
  }
}

}  // namespace fisheye_calibration::program
