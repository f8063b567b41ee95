#include "drawing/target_overlay.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <opencv2/imgproc.hpp>

#include "drawing/primitives.h"

namespace fisheye_calibration::program {
namespace {

constexpr int kSmallestLongSide =
    1400;  // smaller pictures are enlarged to make room for the numbers

const cv::Scalar kInk(60, 20, 0);
const cv::Scalar kPointColour(40, 20, 210);
const cv::Scalar kRowColour(230, 160, 40);
const cv::Scalar kXColour(30, 30, 220);
const cv::Scalar kYColour(40, 150, 20);

double distanceToNearest(const std::vector<cv::Point2d>& positions, std::size_t index) {
  double nearest = HUGE_VAL;
  for (std::size_t i = 0; i < positions.size(); ++i) {
    if (i != index) {
      nearest = std::min(nearest, cv::norm(positions[i] - positions[index]));
    }
  }
  return nearest;
}

void drawAxis(cv::Mat& canvas, cv::Point2d from, cv::Point2d towards, const std::string& name,
              const cv::Scalar& colour, double textHeight) {
  const cv::Point2d end = from + 0.92 * (towards - from);
  drawLine(canvas, from, end, cv::Scalar::all(255), 6);
  drawArrow(canvas, from, end, colour, 3);
  const cv::Point2d label = (from + towards) / 2.0 + cv::Point2d(0, -0.5 * textHeight);
  drawTextWithRim(canvas, name, label, textHeight, colour, Anchor::kCentre);
}

}  // namespace

cv::Mat drawTargetOverlay(const cv::Mat& grey, const std::vector<CalibrationPoint>& points,
                          const std::string& caption) {
  const double scale =
      std::max(1.0, std::ceil(static_cast<double>(kSmallestLongSide) /
                              static_cast<double>(std::max(grey.cols, grey.rows))));
  cv::Mat picture;
  cv::resize(grey, picture, cv::Size(), scale, scale, cv::INTER_CUBIC);
  cv::cvtColor(picture, picture, cv::COLOR_GRAY2BGR);
  const double unit = std::max(picture.cols, picture.rows) / 110.0;
  const int band = static_cast<int>(3 * unit);
  cv::copyMakeBorder(picture, picture, 0, band, 0, 0, cv::BORDER_CONSTANT, cv::Scalar::all(255));

  std::vector<cv::Point2d> positions;
  positions.reserve(points.size());
  for (const CalibrationPoint& point : points) {
    positions.emplace_back((static_cast<double>(point.ImagePtX) + 0.5) * scale - 0.5,
                           (static_cast<double>(point.ImagePtY) + 0.5) * scale - 0.5);
  }
  for (std::size_t i = 1; i < points.size(); ++i) {
    if (points[i].Yw == points[i - 1].Yw) {
      drawLine(picture, positions[i - 1], positions[i], kRowColour, 2);
    }
  }
  if (points.size() > 1 && points[1].Yw == points[0].Yw) {
    drawAxis(picture, positions[0], positions[1], "X", kXColour, unit);
    const auto nextRow = std::find_if(points.begin(), points.end(), [&](const CalibrationPoint& p) {
      return p.Yw > points[0].Yw && p.Xw >= points[0].Xw;
    });
    if (nextRow != points.end()) {
      drawAxis(picture, positions[0], positions[static_cast<std::size_t>(nextRow - points.begin())],
               "Y", kYColour, unit);
    }
  }
  for (std::size_t i = 0; i < points.size(); ++i) {
    const double room = distanceToNearest(positions, i);
    const double height = std::clamp(0.26 * room, 9.0, 1.4 * unit);
    drawRing(picture, positions[i], std::clamp(0.12 * room, 2.5, 7.0), kPointColour, 2);
    drawTextWithRim(picture, std::to_string(points[i].PointId),
                    positions[i] + cv::Point2d(0.4 * height, -0.45 * height), height, kInk);
  }
  double captionHeight = 1.1 * unit;
  const double room = picture.cols - 2 * unit;
  captionHeight *= std::min(1.0, room / textWidth(caption, captionHeight));
  drawText(picture, caption, {unit, picture.rows - 1.1 * unit}, captionHeight, cv::Scalar::all(0));
  return picture;
}

}  // namespace fisheye_calibration::program
