#include "drawing/primitives.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <opencv2/imgproc.hpp>

namespace fisheye_calibration::program {
namespace {

constexpr int kSubPixelBits = 4;
constexpr int kFont = cv::FONT_HERSHEY_SIMPLEX;
constexpr double kFarAway = 1e5;  // coordinates are clamped to this, to stay within 32 bits

cv::Point scaledUp(cv::Point2d point) {
  const auto fixedPoint = [](double value) {
    const double safe = std::isfinite(value) ? std::clamp(value, -kFarAway, kFarAway) : -kFarAway;
    return static_cast<int>(std::lround(safe * (1 << kSubPixelBits)));
  };
  return {fixedPoint(point.x), fixedPoint(point.y)};
}

int textThickness(double height) { return std::max(1, static_cast<int>(std::lround(height / 12))); }

double fontScale(double height) {
  return cv::getFontScaleFromHeight(kFont, static_cast<int>(std::lround(height)),
                                    textThickness(height));
}

cv::Point textOrigin(const std::string& text, cv::Point2d position, double height, Anchor anchor) {
  const double share = anchor == Anchor::kLeft ? 0 : anchor == Anchor::kCentre ? 0.5 : 1;
  return {static_cast<int>(std::lround(position.x - share * textWidth(text, height))),
          static_cast<int>(std::lround(position.y))};
}

}  // namespace

cv::Scalar scaleColour(double share) {
  struct Stop {
    double at, blue, green, red;
  };
  static constexpr Stop kStops[] = {{0.00, 200, 60, 20},
                                    {0.30, 150, 150, 0},
                                    {0.55, 40, 160, 90},
                                    {0.75, 0, 140, 235},
                                    {1.00, 30, 20, 205}};
  const double t = std::isfinite(share) ? std::clamp(share, 0.0, 1.0) : 1;
  const Stop* upper = std::begin(kStops) + 1;
  while (upper->at < t) {
    ++upper;
  }
  const Stop& lower = *(upper - 1);
  const double w = (t - lower.at) / (upper->at - lower.at);
  return {lower.blue + w * (upper->blue - lower.blue),
          lower.green + w * (upper->green - lower.green), lower.red + w * (upper->red - lower.red)};
}

double textWidth(const std::string& text, double height) {
  int baseLine = 0;
  return cv::getTextSize(text, kFont, fontScale(height), textThickness(height), &baseLine).width;
}

void drawText(cv::Mat& canvas, const std::string& text, cv::Point2d position, double height,
              const cv::Scalar& colour, Anchor anchor) {
  cv::putText(canvas, text, textOrigin(text, position, height, anchor), kFont, fontScale(height),
              colour, textThickness(height), cv::LINE_AA);
}

void drawTextWithRim(cv::Mat& canvas, const std::string& text, cv::Point2d position, double height,
                     const cv::Scalar& colour, Anchor anchor) {
  const int rim = textThickness(height) + 2 * std::max(1, static_cast<int>(height / 7));
  cv::putText(canvas, text, textOrigin(text, position, height, anchor), kFont, fontScale(height),
              cv::Scalar::all(255), rim, cv::LINE_AA);
  drawText(canvas, text, position, height, colour, anchor);
}

void drawDisc(cv::Mat& canvas, cv::Point2d centre, double radius, const cv::Scalar& colour) {
  cv::circle(canvas, scaledUp(centre), scaledUp({radius, 0}).x, colour, cv::FILLED, cv::LINE_AA,
             kSubPixelBits);
}

void drawRing(cv::Mat& canvas, cv::Point2d centre, double radius, const cv::Scalar& colour,
              int thickness) {
  cv::circle(canvas, scaledUp(centre), scaledUp({radius, 0}).x, colour, thickness, cv::LINE_AA,
             kSubPixelBits);
}

void drawLine(cv::Mat& canvas, cv::Point2d from, cv::Point2d to, const cv::Scalar& colour,
              int thickness) {
  cv::line(canvas, scaledUp(from), scaledUp(to), colour, thickness, cv::LINE_AA, kSubPixelBits);
}

void drawArrow(cv::Mat& canvas, cv::Point2d from, cv::Point2d to, const cv::Scalar& colour,
               int thickness) {
  const cv::Point2d along = to - from;
  const double length = std::hypot(along.x, along.y);
  if (!(length > 0)) {
    return;
  }
  drawLine(canvas, from, to, colour, thickness);
  // Short arrows have smaller heads, so that they still look like arrows.
  const double head = std::min(0.4 * length, 4.0 + 3.0 * thickness);
  const cv::Point2d back = along * (-head / length);
  for (const double side : {0.45, -0.45}) {
    const cv::Point2d wing(back.x * std::cos(side) - back.y * std::sin(side),
                           back.x * std::sin(side) + back.y * std::cos(side));
    drawLine(canvas, to, to + wing, colour, thickness);
  }
}

}  // namespace fisheye_calibration::program
