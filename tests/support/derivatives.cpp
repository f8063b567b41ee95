#include "support/derivatives.h"

#include <algorithm>

namespace support {
namespace {

cv::Mat differenceQuotient(const std::function<cv::Mat(const cv::Mat&)>& f, const cv::Mat& x,
                           int index, double step) {
  cv::Mat ahead = x.clone();
  cv::Mat behind = x.clone();
  ahead.at<double>(index) += step;
  behind.at<double>(index) -= step;
  return (f(ahead) - f(behind)) / (ahead.at<double>(index) - behind.at<double>(index));
}

template <class Scalar, class Make>
ProjectionParameters<Scalar> unpack(const cv::Mat& column, const Make& make) {
  const auto at = [&](int i) { return make(column.at<double>(i), i); };
  return {at(0), at(1), at(2), at(3), at(4), at(5), {at(6), at(7), at(8)}, {at(9), at(10), at(11)},
          at(12)};
}

}  // namespace

cv::Mat centralDifferences(const std::function<cv::Mat(const cv::Mat&)>& f, const cv::Mat& x,
                           double step) {
  cv::Mat jacobian;
  for (int j = 0; j < x.rows; ++j) {
    const double h = step * std::max(1.0, std::abs(x.at<double>(j)));
    const cv::Mat coarse = differenceQuotient(f, x, j, h);
    const cv::Mat fine = differenceQuotient(f, x, j, h / 2);
    const cv::Mat slope = (4 * fine - coarse) / 3;
    if (jacobian.empty()) jacobian.create(slope.rows, x.rows, CV_64F);
    slope.copyTo(jacobian.col(j));
  }
  return jacobian;
}

double largestRelativeDifference(const cv::Mat& a, const cv::Mat& b) {
  double worst = 0;
  for (int j = 0; j < b.cols; ++j) {
    const double scale = std::max(1.0, cv::norm(b.col(j), cv::NORM_INF));
    for (int i = 0; i < b.rows; ++i) {
      const double difference = std::abs(a.at<double>(i, j) - b.at<double>(i, j)) / scale;
      if (!(difference <= worst)) worst = difference;  // a NaN is the worst of all
    }
  }
  return worst;
}

ProjectionParameters<double> projectionParameters(const cv::Mat& column) {
  return unpack<double>(column, [](double value, int) { return value; });
}

ProjectionParameters<Dual<13>> dualProjectionParameters(const cv::Mat& column) {
  return unpack<Dual<13>>(column, Dual<13>::parameter);
}

cv::Mat differentiatedProjection(const std::vector<cv::Point3d>& points, const cv::Mat& column) {
  cv::Mat jacobian(2 * static_cast<int>(points.size()), 13, CV_64F);
  int row = 0;
  for (const cv::Point3d& point : points) {
    for (const Dual<13>& coordinate : projectPoint(point, dualProjectionParameters(column))) {
      for (int j = 0; j < 13; ++j) {
        jacobian.at<double>(row, j) = coordinate.slope[static_cast<size_t>(j)];
      }
      ++row;
    }
  }
  return jacobian;
}

}  // namespace support
