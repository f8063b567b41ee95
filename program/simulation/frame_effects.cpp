#include "simulation/frame_effects.h"

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "simulation/random_numbers.h"

namespace fisheye_calibration::program {
namespace {

constexpr int kNoiseLevels = 1 << 20;  // from which each row takes a part at random

}  // namespace

cv::Mat withLight(const cv::Mat& frame, const FrameEffects& effects) {
  cv::Mat result = frame.clone();
  if (effects.blur > 0) {
    cv::GaussianBlur(frame, result, {}, effects.blur);
  }
  if (effects.light == 1 && effects.vignetting == 0 && effects.gradient == 0) {
    return result;
  }
  const double cx = 0.5 * (frame.cols - 1);
  const double cy = 0.5 * (frame.rows - 1);
  const double corner = std::max(1.0, cx * cx + cy * cy);
  const int channels = frame.channels();
  for (int y = 0; y < result.rows; ++y) {
    auto* const row = result.ptr<unsigned char>(y);
    for (int x = 0; x < result.cols; ++x) {
      const double r2 = ((x - cx) * (x - cx) + (y - cy) * (y - cy)) / corner;
      const double light = effects.light * (1 - effects.vignetting * r2) *
                           (1 - effects.gradient * x / std::max(1, frame.cols - 1));
      for (int k = 0; k < channels; ++k) {
        unsigned char& level = row[x * channels + k];
        level = cv::saturate_cast<unsigned char>(light * level);
      }
    }
  }
  return result;
}

SensorNoise::SensorNoise(double sigma, std::uint64_t seed) : seed_(seed) {
  if (!(sigma > 0)) {
    return;
  }
  RandomNumbers random(seed);
  levels_.create(1, kNoiseLevels, CV_16S);
  for (int i = 0; i < kNoiseLevels; ++i) {
    levels_.at<short>(0, i) = cv::saturate_cast<short>(sigma * random.normal());
  }
}

cv::Mat SensorNoise::added(const cv::Mat& frame, std::uint64_t number) const {
  if (levels_.empty()) {
    return frame.clone();
  }
  const cv::Mat values = frame.reshape(1);
  cv::Mat result(values.size(), CV_8U);
  RandomNumbers random(seed_, number + 1);
  const int parts = std::max(1, kNoiseLevels - values.cols);
  for (int y = 0; y < values.rows; ++y) {
    const int start = static_cast<int>(random.bits() % static_cast<unsigned>(parts));
    cv::Mat row = result.row(y);
    cv::add(values.row(y), levels_.colRange(start, start + values.cols), row, cv::noArray(), CV_8U);
  }
  return result.reshape(frame.channels());
}

}  // namespace fisheye_calibration::program
