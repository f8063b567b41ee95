#include "drawing/grid_overlay.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
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

// Blends black into what is light and white into what is dark, by the mask's share of 255. A light
// grey around counts as light; single pixels do not change the colour of a line.
void blendContrasting(cv::Mat& picture, const cv::Mat& mask) {
  constexpr int kNeighbourhood = 31;  // pixels
  constexpr int kLight = 96;
  cv::Mat around;
  cv::blur(picture, around, cv::Size(kNeighbourhood, kNeighbourhood));
  for (int y = 0; y < picture.rows; ++y) {
    unsigned char* const pixels = picture.ptr(y);
    const unsigned char* const shares = mask.ptr(y);
    const unsigned char* const brightness = around.ptr(y);
    for (int x = 0; x < picture.cols; ++x) {
      const int target = brightness[x] >= kLight ? 0 : 255;
      const int blended = (pixels[x] * (255 - shares[x]) + target * shares[x] + 127) / 255;
      pixels[x] = static_cast<unsigned char>(blended);
    }
  }
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
  // Lines in a grey picture are drawn where the mask is not 0, black on light and white on dark.
  cv::Mat mask = grey ? cv::Mat(cv::Mat::zeros(picture.size(), CV_8UC1)) : cv::Mat();
  const auto line = [&](cv::Point2d from, cv::Point2d to) {
    if (grey) {
      drawLine(mask, from, to, cv::Scalar(255), thickness);
    } else {
      drawLine(picture, from, to, colour, thickness);
    }
  };
  for (const GridLine& at : grid.columns) {
    line({at.pixel, -1}, {at.pixel, static_cast<double>(picture.rows)});
  }
  for (const GridLine& at : grid.rows) {
    line({-1, at.pixel}, {static_cast<double>(picture.cols), at.pixel});
  }
  if (grey) {
    blendContrasting(picture, mask);
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
