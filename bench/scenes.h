// Frames with the records they are corrected with.
#pragma once

#include <cstddef>
#include <functional>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "fisheye_calibration.h"

namespace bench {

using Bytes = std::vector<unsigned char>;

// How the view shows the corrected image, about its centre.
struct Placement {
  double scale = 0.8;
  double turn = 0.05;  // radians
  double tilt =
      0.15;  // change of scale from the centre to the view's edge, half as much vertically
};

struct Scene {
  cv::Size frameSize;
  cv::Size viewSize;
  int bitCount = 8;
  FishEyeCalibrationParam param{};
  Bytes frame;

  std::size_t bytesPerPixel() const { return static_cast<std::size_t>(bitCount) / 8; }
  std::size_t framePixels() const;
  std::size_t viewPixels() const;
  cv::Mat K() const;  // of the raw frame
  cv::Mat D() const;
  cv::Mat H() const;
};

std::string textOf(const cv::Size& size);
std::string textOf(const cv::Size& size, int bitCount);

void place(Scene& scene, const Placement& placement);

// A tilted camera with a fisheye lens, and a frame of noise.
Scene usualScene(const cv::Size& size, int bitCount);

// The same, with a view of another size that shows the same.
Scene usualScene(const cv::Size& frameSize, const cv::Size& viewSize, int bitCount);

struct NamedScene {
  std::string name;
  std::function<Scene(const cv::Size& size, int bitCount)> make;
};

// The usual scene and variations of it, each of which asks something else of a renderer.
std::vector<NamedScene> namedScenes();

}  // namespace bench
