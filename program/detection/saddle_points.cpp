#include "detection/saddle_points.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace fisheye_calibration::program {
namespace {

constexpr double kSmoothing = 1.5;       // standard deviation, pixels
constexpr double kRadius = 4.0;          // of the circle around a point, pixels
constexpr int kSamples = 24;             // on the circle
constexpr int kSuppression = 5;          // pixels; a point is the strongest in such a square
constexpr double kSmallestContrast = 1;  // grey levels
constexpr double kSmallestShare = 0.65;  // of the circle's variation that alternates twice

// The grey levels on a circle around a saddle point repeat after half a turn:
//   g(phi) = mean + contrast cos(2 (phi - axis)) + higher even harmonics.
// Edges, line ends and corners of squares vary with odd harmonics, too.
SaddlePoint onCircle(const cv::Mat& smooth, cv::Point2d centre, double& share) {
  double cosine = 0;
  double sine = 0;
  double mean = 0;
  std::array<double, kSamples> grey{};
  for (std::size_t i = 0; i < grey.size(); ++i) {
    const double phi = 2 * CV_PI * static_cast<double>(i) / kSamples;
    const int x = static_cast<int>(std::lround(centre.x + kRadius * std::cos(phi)));
    const int y = static_cast<int>(std::lround(centre.y + kRadius * std::sin(phi)));
    grey[i] = static_cast<double>(smooth.at<float>(y, x));
    mean += grey[i] / kSamples;
    cosine += 2 * grey[i] * std::cos(2 * phi) / kSamples;
    sine += 2 * grey[i] * std::sin(2 * phi) / kSamples;
  }
  double variation = 0;
  for (const double value : grey) {
    variation += (value - mean) * (value - mean) / kSamples;
  }
  const double contrast = std::hypot(cosine, sine);
  share = variation > 0 ? contrast * contrast / 2 / variation : 0;
  const cv::Point2d axis = contrast > 0 ? cv::Point2d(cosine, sine) / contrast : cv::Point2d(1, 0);
  return {.position = centre, .axis = axis, .contrast = contrast};
}

// Minus the determinant of the second derivatives: positive at saddle points.
cv::Mat saddleness(const cv::Mat& smooth) {
  cv::Mat xx;
  cv::Mat yy;
  cv::Mat xy;
  cv::Sobel(smooth, xx, CV_32F, 2, 0, 3, 1.0 / 4);
  cv::Sobel(smooth, yy, CV_32F, 0, 2, 3, 1.0 / 4);
  cv::Sobel(smooth, xy, CV_32F, 1, 1, 3, 1.0 / 4);
  return xy.mul(xy) - xx.mul(yy);
}

}  // namespace

cv::Mat smoothed(const cv::Mat& grey) {
  cv::Mat smooth;
  grey.convertTo(smooth, CV_32F);
  cv::GaussianBlur(smooth, smooth, cv::Size(), kSmoothing);
  return smooth;
}

std::vector<SaddlePoint> findSaddlePoints(const cv::Mat& smooth, std::size_t limit) {
  constexpr int kMargin = static_cast<int>(kRadius) + 2;
  std::vector<SaddlePoint> points;
  if (smooth.cols <= 2 * kMargin || smooth.rows <= 2 * kMargin) {
    return points;
  }
  const cv::Mat strength = saddleness(smooth);
  cv::Mat strongest;
  cv::dilate(strength, strongest,
             cv::getStructuringElement(cv::MORPH_RECT, cv::Size(kSuppression, kSuppression)));
  for (int y = kMargin; y < smooth.rows - kMargin; ++y) {
    const auto* const here = strength.ptr<float>(y);
    const auto* const best = strongest.ptr<float>(y);
    for (int x = kMargin; x < smooth.cols - kMargin; ++x) {
      if (here[x] <= 0.01F || here[x] < best[x]) {
        continue;
      }
      double share = 0;
      const SaddlePoint point = onCircle(smooth, cv::Point2d(x, y), share);
      if (point.contrast >= kSmallestContrast && share >= kSmallestShare) {
        points.push_back(point);
      }
    }
  }
  const auto stronger = [](const SaddlePoint& a, const SaddlePoint& b) {
    return a.contrast > b.contrast;
  };
  std::stable_sort(points.begin(), points.end(), stronger);
  points.resize(std::min(points.size(), limit));
  return points;
}

}  // namespace fisheye_calibration::program
