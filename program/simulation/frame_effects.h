// What light, lens and sensor do to a frame.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace fisheye_calibration::program {

struct FrameEffects {
  double light = 1;  // factor of the brightness
  // Share of the light that is lost in the corners; it grows with the distance squared.
  double vignetting = 0;
  double gradient = 0;  // share of the light that is lost from the left edge to the right one
  double blur = 0;      // standard deviation, pixels
  double noise = 0;     // standard deviation, grey levels
};

// All but the noise.
cv::Mat withLight(const cv::Mat& frame, const FrameEffects& effects);

// Normally distributed noise that is the same for the same seed and the same number of a frame.
class SensorNoise {
 public:
  SensorNoise(double sigma, std::uint64_t seed);

  cv::Mat added(const cv::Mat& frame, std::uint64_t number) const;

 private:
  std::uint64_t seed_;
  cv::Mat levels_;  // one row; empty without noise
};

}  // namespace fisheye_calibration::program
