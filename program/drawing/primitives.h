// Plain drawing for the pictures that the program writes.
#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace fisheye_calibration::program {

// Blue for 0 over cyan-green and amber to red for 1, dark enough for a light ground.
cv::Scalar scaleColour(double share);

enum class Anchor { kLeft, kCentre, kRight };

// `y` is the base line; `height` that of the capitals, pixels.
void drawText(cv::Mat& canvas, const std::string& text, cv::Point2d place, double height,
              const cv::Scalar& colour, Anchor anchor = Anchor::kLeft);
double textWidth(const std::string& text, double height);

// The same with a light rim, readable on any ground.
void drawTextWithRim(cv::Mat& canvas, const std::string& text, cv::Point2d place, double height,
                     const cv::Scalar& colour, Anchor anchor = Anchor::kLeft);

void drawDisc(cv::Mat& canvas, cv::Point2d centre, double radius, const cv::Scalar& colour);
void drawRing(cv::Mat& canvas, cv::Point2d centre, double radius, const cv::Scalar& colour,
              int thickness);
void drawLine(cv::Mat& canvas, cv::Point2d from, cv::Point2d to, const cv::Scalar& colour,
              int thickness);
void drawArrow(cv::Mat& canvas, cv::Point2d from, cv::Point2d to, const cv::Scalar& colour,
               int thickness);

// 1, 2 or 5 times a power of ten: the largest that is not above `value`.
double niceBelow(double value);
double niceAbove(double value);

}  // namespace fisheye_calibration::program
