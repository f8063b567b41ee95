#include "page/picture_quality.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <opencv2/imgproc.hpp>

namespace fisheye_calibration::program {
namespace {

constexpr int kThumbnailColumns = 160;
constexpr double kFewestContrast = 30;  // grey levels between the 5th and the 95th percentile
constexpr double kSharp = 1.6;          // px
constexpr double kSoft = 3;             // px

struct Histogram {
  std::array<double, 256> share{};

  double below(int level) const {
    double sum = 0;
    for (int i = 0; i < level; ++i) {
      sum += share[static_cast<std::size_t>(i)];
    }
    return sum;
  }
  int percentile(double wanted) const {
    double sum = 0;
    for (int i = 0; i < 256; ++i) {
      sum += share[static_cast<std::size_t>(i)];
      if (sum >= wanted) {
        return i;
      }
    }
    return 255;
  }
};

Histogram histogramOf(const cv::Mat& grey) {
  std::array<std::size_t, 256> counts{};
  for (int y = 0; y < grey.rows; ++y) {
    const auto* const row = grey.ptr<unsigned char>(y);
    for (int x = 0; x < grey.cols; ++x) {
      ++counts[row[x]];
    }
  }
  Histogram histogram;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    histogram.share[i] = static_cast<double>(counts[i]) / static_cast<double>(grey.total());
  }
  return histogram;
}

// The rise a pixel that only one in a thousand pixels exceeds, grey levels.
double steepestRise(const cv::Mat& grey) {
  cv::Mat dx;
  cv::Mat dy;
  // The kernels average three rows and take the difference over two pixels: a rise of 1 gives 8.
  cv::Sobel(grey, dx, CV_16S, 1, 0, 3);
  cv::Sobel(grey, dy, CV_16S, 0, 1, 3);
  std::array<std::size_t, 2049> counts{};
  for (int y = 0; y < grey.rows; ++y) {
    const auto* const alongX = dx.ptr<short>(y);
    const auto* const alongY = dy.ptr<short>(y);
    for (int x = 0; x < grey.cols; ++x) {
      // Not by hypot(), which would take a third of the time of all that is measured.
      const double rise = std::sqrt(alongX[x] * alongX[x] + alongY[x] * alongY[x]);
      ++counts[static_cast<std::size_t>(std::min(2048.0, rise))];
    }
  }
  const std::size_t few = grey.total() / 1000 + 1;
  std::size_t sum = 0;
  for (std::size_t i = counts.size(); i-- > 0;) {
    sum += counts[i];
    if (sum >= few) {
      return static_cast<double>(i) / 8;
    }
  }
  return 0;
}

}  // namespace

Exposure exposureOf(const cv::Mat& grey) {
  const Histogram histogram = histogramOf(grey);
  Exposure exposure;
  for (int i = 0; i < 256; ++i) {
    exposure.mean += i * histogram.share[static_cast<std::size_t>(i)];
  }
  exposure.dark = histogram.below(5);
  exposure.bright = 1 - histogram.below(251);
  const int low = histogram.percentile(0.05);
  const int high = histogram.percentile(0.95);
  if (high < 60) {
    exposure.word = "too dark";
  } else if (exposure.bright > 0.2) {
    exposure.word = "too bright";
  } else if (high - low < kFewestContrast) {
    exposure.word = "too little contrast";
  } else {
    exposure.word = "good";
  }
  return exposure;
}

Focus focusOf(const cv::Mat& grey) {
  const Histogram histogram = histogramOf(grey);
  const double contrast = histogram.percentile(0.99) - histogram.percentile(0.01);
  const double rise = steepestRise(grey);
  if (contrast < kFewestContrast || rise <= 0) {
    return {"nothing to focus on", 0};
  }
  const double blur = contrast / (rise * std::sqrt(2 * std::numbers::pi));
  return {blur <= kSharp ? "sharp" : blur <= kSoft ? "soft" : "blurred", blur};
}

cv::Mat thumbnailOf(const cv::Mat& grey) {
  cv::Mat small;
  const int rows = std::max(1, grey.rows * kThumbnailColumns / std::max(1, grey.cols));
  cv::resize(grey, small, {kThumbnailColumns, rows}, 0, 0, cv::INTER_AREA);
  return small;
}

double largestDifference(const cv::Mat& a, const cv::Mat& b) {
  if (a.empty() || a.size() != b.size()) {
    return 255;
  }
  return cv::norm(a, b, cv::NORM_INF);
}

}  // namespace fisheye_calibration::program
