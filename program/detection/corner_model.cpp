#include "detection/corner_model.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace fisheye_calibration::program {
namespace {

// g(p) = m + gx x + gy y + a s(d1) s(d2),  s(d) = d / sqrt(d^2 + w^2),
// d1 = -sin(t1) x + cos(t1) y,  d2 likewise,  (x, y) = p - corner.
// m: mean grey, (gx, gy): slope of the lighting, a: half the contrast, w: blur of the edges.
constexpr int kUnknowns = 9;
enum Unknown { kX, kY, kFirst, kSecond, kBlur, kMean, kSlopeX, kSlopeY, kContrast };
using Vector = cv::Matx<double, kUnknowns, 1>;
using Matrix = cv::Matx<double, kUnknowns, kUnknowns>;

constexpr int kMostSteps = 30;
constexpr double kStill = 1e-4;            // pixels
constexpr double kSmallestContrast = 1.5;  // grey levels, half of dark to bright
constexpr double kDenseRadius = 10;        // pixels
constexpr double kSmallestBlur = 0.3;      // pixels

struct Pixel {
  double x, y, grey;
};

// The picture's pixels in a circle; of large circles every second, third, ... in both directions.
std::vector<Pixel> window(const cv::Mat& grey, cv::Point2d centre, double radius) {
  const int stride = std::max(1, static_cast<int>(radius / kDenseRadius));
  const int left = std::max(0, static_cast<int>(std::ceil(centre.x - radius)));
  const int top = std::max(0, static_cast<int>(std::ceil(centre.y - radius)));
  const double right = std::min(grey.cols - 1.0, centre.x + radius);
  const double bottom = std::min(grey.rows - 1.0, centre.y + radius);
  std::vector<Pixel> pixels;
  for (int y = top; y <= bottom; y += stride) {
    for (int x = left; x <= right; x += stride) {
      if (std::hypot(x - centre.x, y - centre.y) <= radius) {
        pixels.push_back(
            {x - centre.x, y - centre.y, static_cast<double>(grey.at<unsigned char>(y, x))});
      }
    }
  }
  return pixels;
}

double modelAt(const Vector& u, const Pixel& pixel, Vector& slope) {
  const double x = pixel.x - u(kX);
  const double y = pixel.y - u(kY);
  const double sin1 = std::sin(u(kFirst));
  const double cos1 = std::cos(u(kFirst));
  const double sin2 = std::sin(u(kSecond));
  const double cos2 = std::cos(u(kSecond));
  const double d1 = -sin1 * x + cos1 * y;
  const double d2 = -sin2 * x + cos2 * y;
  const double w2 = u(kBlur) * u(kBlur);
  const double r1 = 1 / std::sqrt(d1 * d1 + w2);
  const double r2 = 1 / std::sqrt(d2 * d2 + w2);
  const double s1 = d1 * r1;
  const double s2 = d2 * r2;
  // ds/dd = w^2 r^3, ds/dw = -d w r^3
  const double a1 = u(kContrast) * s2 * r1 * r1 * r1;
  const double a2 = u(kContrast) * s1 * r2 * r2 * r2;
  slope(kX) = w2 * (a1 * sin1 + a2 * sin2) - u(kSlopeX);
  slope(kY) = -w2 * (a1 * cos1 + a2 * cos2) - u(kSlopeY);
  slope(kFirst) = w2 * a1 * (-cos1 * x - sin1 * y);
  slope(kSecond) = w2 * a2 * (-cos2 * x - sin2 * y);
  slope(kBlur) = -u(kBlur) * (a1 * d1 + a2 * d2);
  slope(kMean) = 1;
  slope(kSlopeX) = x;
  slope(kSlopeY) = y;
  slope(kContrast) = s1 * s2;
  return u(kMean) + u(kSlopeX) * x + u(kSlopeY) * y + u(kContrast) * s1 * s2;
}

double squares(const std::vector<Pixel>& pixels, const Vector& u, Matrix& normal, Vector& right) {
  normal = Matrix::zeros();
  right = Vector::zeros();
  double sum = 0;
  Vector slope;
  for (const Pixel& pixel : pixels) {
    const double residual = pixel.grey - modelAt(u, pixel, slope);
    sum += residual * residual;
    for (int i = 0; i < kUnknowns; ++i) {
      right(i) += slope(i) * residual;
      for (int j = 0; j <= i; ++j) {
        normal(i, j) += slope(i) * slope(j);
      }
    }
  }
  for (int i = 0; i < kUnknowns; ++i) {
    for (int j = 0; j < i; ++j) {
      normal(j, i) = normal(i, j);
    }
  }
  return sum;
}

Vector startAt(const std::vector<Pixel>& pixels, const CrossedEdges& edges, double radius) {
  Vector u;
  u(kFirst) = edges.first;
  u(kSecond) = edges.second;
  u(kBlur) = std::max(1.0, radius / 4);
  Vector slope;
  double products = 0;
  double norm = 0;
  u(kContrast) = 1;
  for (const Pixel& pixel : pixels) {
    u(kMean) += pixel.grey / static_cast<double>(pixels.size());
  }
  for (const Pixel& pixel : pixels) {
    modelAt(u, pixel, slope);
    products += slope(kContrast) * (pixel.grey - u(kMean));
    norm += slope(kContrast) * slope(kContrast);
  }
  u(kContrast) = norm > 0 ? products / norm : 0;
  return u;
}

}  // namespace

std::optional<CornerFit> fitCorner(const cv::Mat& grey, const CrossedEdges& start, double radius) {
  const std::vector<Pixel> pixels = window(grey, start.position, radius);
  if (pixels.size() < 2 * static_cast<std::size_t>(kUnknowns)) {
    return std::nullopt;
  }
  // Levenberg's and Marquardt's method.
  Vector u = startAt(pixels, start, radius);
  Matrix normal;
  Vector right;
  double sum = squares(pixels, u, normal, right);
  double damping = 1e-3;
  for (int i = 0; i < kMostSteps && damping < 1e6; ++i) {
    Matrix damped = normal;
    for (int k = 0; k < kUnknowns; ++k) {
      damped(k, k) += damping * (normal(k, k) + 1e-9);
    }
    Vector next = u + damped.solve(right, cv::DECOMP_CHOLESKY);
    next(kBlur) = std::clamp(next(kBlur), kSmallestBlur, radius);
    Matrix nextNormal;
    Vector nextRight;
    const double nextSum = squares(pixels, next, nextNormal, nextRight);
    if (!(nextSum <= sum)) {
      damping *= 8;
      continue;
    }
    const double moved = std::hypot(next(kX) - u(kX), next(kY) - u(kY));
    u = next;
    sum = nextSum;
    normal = nextNormal;
    right = nextRight;
    damping /= 4;
    if (moved < kStill) {
      break;
    }
  }
  const double moved = std::hypot(u(kX), u(kY));
  if (!(moved < radius) || std::abs(u(kContrast)) < kSmallestContrast) {
    return std::nullopt;
  }
  double variation = 0;
  for (const Pixel& pixel : pixels) {
    const double lighting =
        u(kMean) + u(kSlopeX) * (pixel.x - u(kX)) + u(kSlopeY) * (pixel.y - u(kY));
    variation += (pixel.grey - lighting) * (pixel.grey - lighting);
  }
  return CornerFit{.position = start.position + cv::Point2d(u(kX), u(kY)),
                   .contrast = std::abs(u(kContrast)),
                   .explained = variation > 0 ? 1 - sum / variation : 0};
}

}  // namespace fisheye_calibration::program
