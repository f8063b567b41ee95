#include "sampled_pixels.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <opencv2/core.hpp>
#include <vector>

#include "support/plain_correction.h"
#include "support/plain_remap.h"
#include "support/synthetic_rig.h"

namespace bench {
namespace {

constexpr int kSamples = 300;
constexpr unsigned char kNoContent = 255;

std::vector<cv::Point> samplesOf(const cv::Size& size) {
  std::vector<cv::Point> samples = {
      {0, 0}, {size.width - 1, 0}, {0, size.height - 1}, {size.width - 1, size.height - 1}};
  support::Random random(7);
  while (samples.size() < kSamples) {
    samples.emplace_back(static_cast<int>(random.uniform(0, size.width)),
                         static_cast<int>(random.uniform(0, size.height)));
  }
  return samples;
}

struct Pixel {
  unsigned char bytes[4] = {0, 0, 0, 0};
  unsigned char mask = kNoContent;
};

class PlainPixels {
 public:
  explicit PlainPixels(const Scene& scene)
      : scene_(scene),
        frame_(plain::imageOfBuffer(scene.frame.data(), scene.frameSize.width,
                                    scene.frameSize.height, scene.bitCount)),
        blank_(scene.frameSize, CV_8UC1, cv::Scalar(0)) {
    cv::invert(scene.H(), Hinv_, cv::DECOMP_LU);
  }

  Pixel at(const cv::Point& p) const {
    Pixel pixel;
    const FishEyeCalibrationParam& param = scene_.param;
    const cv::Point from =
        plain::nearestSource(Hinv_, p.x - double{param.ImageDx}, p.y - double{param.ImageDy});
    if (!cv::Rect({}, scene_.viewSize).contains(from)) return pixel;
    cv::Mat row1;
    cv::Mat row2;
    plain::undistortRectifyMap(scene_.K(), scene_.D(), cv::Mat::eye(3, 3, CV_64F), scene_.K(),
                               scene_.viewSize, row1, row2, {from.y, from.y + 1});
    const cv::Mat map1 = row1.col(from.x);
    const cv::Mat map2 = row2.col(from.x);
    cv::Mat shown(1, 1, frame_.type(), pixel.bytes);
    cv::Mat outside(1, 1, CV_8UC1);
    plain::remapTransparent(frame_, shown, map1, map2);
    plain::remapConstant(blank_, outside, map1, map2, kNoContent);
    pixel.mask = outside.at<unsigned char>(0, 0) > 127 ? kNoContent : 0;
    return pixel;
  }

 private:
  const Scene& scene_;
  cv::Mat frame_;
  cv::Mat blank_;
  cv::Mat Hinv_;
};

}  // namespace

bool hasPlainBytesInSamples(const Scene& scene, const View& view) {
  const PlainPixels plain(scene);
  const std::size_t bytes = scene.bytesPerPixel();
  bool agree = true;
  for (const cv::Point& p : samplesOf(scene.viewSize)) {
    const std::size_t i = static_cast<std::size_t>(scene.viewSize.height - 1 - p.y) *
                              static_cast<std::size_t>(scene.viewSize.width) +
                          static_cast<std::size_t>(p.x);
    const Pixel expected = plain.at(p);
    const unsigned char* const shown = view.pixels.data() + i * bytes;
    if (!std::equal(shown, shown + bytes, expected.bytes) || view.mask[i] != expected.mask) {
      std::fprintf(stderr, "%d x %d, %d bits: pixel (%d, %d) differs\n", scene.viewSize.width,
                   scene.viewSize.height, scene.bitCount, p.x, p.y);
      agree = false;
    }
  }
  return agree;
}

}  // namespace bench
