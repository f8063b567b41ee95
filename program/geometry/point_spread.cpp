#include "geometry/point_spread.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "geometry/target_points.h"

namespace fisheye_calibration::program {
std::vector<cv::Point2d> bedPositions(const std::vector<CalibrationPoint>& points) {
  std::vector<cv::Point2d> positions;
  std::transform(points.begin(), points.end(), std::back_inserter(positions), bedPosition);
  return positions;
}

std::vector<cv::Point2d> imagePositions(const std::vector<CalibrationPoint>& points) {
  std::vector<cv::Point2d> positions;
  std::transform(points.begin(), points.end(), std::back_inserter(positions), imagePosition);
  return positions;
}

double flatness(const std::vector<cv::Point2d>& positions) {
  cv::Point2d mean(0, 0);
  for (const cv::Point2d& position : positions) {
    mean += position;
  }
  mean *= 1.0 / static_cast<double>(positions.size());
  cv::Matx22d covariance = cv::Matx22d::zeros();
  for (const cv::Point2d& position : positions) {
    const cv::Point2d d = position - mean;
    covariance += cv::Matx22d(d.x * d.x, d.x * d.y, d.x * d.y, d.y * d.y);
  }
  // Eigenvalues of [a b; b c]: (a + c)/2 +- sqrt(((a - c)/2)^2 + b^2).
  const double middle = (covariance(0, 0) + covariance(1, 1)) / 2;
  const double spread = std::hypot((covariance(0, 0) - covariance(1, 1)) / 2, covariance(0, 1));
  if (!(middle + spread > 0)) {
    return 0;
  }
  return std::sqrt(std::max(0.0, middle - spread) / (middle + spread));
}

double hullArea(const std::vector<CalibrationPoint>& points,
                cv::Point2f (*positionOf)(const CalibrationPoint&)) {
  std::vector<cv::Point2f> positions;
  std::transform(points.begin(), points.end(), std::back_inserter(positions), positionOf);
  std::vector<cv::Point2f> hull;
  cv::convexHull(positions, hull);
  return cv::contourArea(hull);
}

double coverage(const std::vector<CalibrationPoint>& points, const Size& image) {
  return hullArea(points, imagePosition) / (static_cast<double>(image.width) * image.height);
}

double scaleRatio(const std::vector<CalibrationPoint>& points) {
  const int n = static_cast<int>(points.size());
  double Xmean = 0;
  double Ymean = 0;
  double extent = 0;
  for (const CalibrationPoint& point : points) {
    Xmean += static_cast<double>(point.Xw) / n;
    Ymean += static_cast<double>(point.Yw) / n;
  }
  for (const CalibrationPoint& point : points) {
    extent = std::max({extent, std::abs(static_cast<double>(point.Xw) - Xmean),
                       std::abs(static_cast<double>(point.Yw) - Ymean)});
  }
  if (!(extent > 0)) {
    return HUGE_VAL;
  }
  cv::Mat design(n, 6, CV_64F);
  cv::Mat image(n, 2, CV_64F);
  for (int i = 0; i < n; ++i) {
    const CalibrationPoint& point = points[static_cast<std::size_t>(i)];
    const double X = (static_cast<double>(point.Xw) - Xmean) / extent;
    const double Y = (static_cast<double>(point.Yw) - Ymean) / extent;
    const double terms[6] = {1, X, Y, X * X, X * Y, Y * Y};
    std::copy(std::begin(terms), std::end(terms), design.ptr<double>(i));
    image.at<double>(i, 0) = static_cast<double>(point.ImagePtX);
    image.at<double>(i, 1) = static_cast<double>(point.ImagePtY);
  }
  cv::Mat c;
  cv::solve(design, image, c, cv::DECOMP_SVD);
  double smallest = HUGE_VAL;
  double largest = 0;
  for (int i = 0; i < n; ++i) {
    const double X = design.at<double>(i, 1);
    const double Y = design.at<double>(i, 2);
    const auto alongX = [&](int k) {
      return c.at<double>(1, k) + 2 * c.at<double>(3, k) * X + c.at<double>(4, k) * Y;
    };
    const auto alongY = [&](int k) {
      return c.at<double>(2, k) + c.at<double>(4, k) * X + 2 * c.at<double>(5, k) * Y;
    };
    const double scale = std::abs(alongX(0) * alongY(1) - alongX(1) * alongY(0));
    smallest = std::min(smallest, scale);
    largest = std::max(largest, scale);
  }
  return smallest > 0 ? largest / smallest : HUGE_VAL;
}

}  // namespace fisheye_calibration::program
