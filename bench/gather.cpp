#include "gather.h"

#include <cstddef>
#include <cstring>
#include <opencv2/core.hpp>

#include "support/plain_correction.h"

namespace bench {
namespace {

// The index of each corrected pixel's raw pixel; as a picture of four channels, its bytes.
cv::Mat numberedRawPixels(const Scene& scene) {
  cv::Mat map1;
  cv::Mat map2;
  plain::undistortRectifyMap(scene.K(), scene.D(), cv::Mat(), scene.K(), scene.viewSize, map1,
                             map2);
  const cv::Rect frame({}, scene.frameSize);
  cv::Mat numbered(scene.viewSize, CV_8UC4);
  for (int y = 0; y < numbered.rows; ++y) {
    for (int x = 0; x < numbered.cols; ++x) {
      const cv::Vec2s raw = map1.at<cv::Vec2s>(y, x);
      const bool inside = frame.contains(cv::Point(raw[0], raw[1]));
      const int index = inside ? (frame.height - 1 - raw[1]) * frame.width + raw[0] : -1;
      std::memcpy(numbered.ptr(y) + 4 * x, &index, 4);
    }
  }
  return numbered;
}

template <std::size_t kBytes>
void gatherPixels(const std::vector<int>& indices, const unsigned char* frame, unsigned char* view,
                  unsigned char* mask) {
  for (std::size_t i = 0; i < indices.size(); ++i) {
    const bool inside = indices[i] >= 0;
    const std::size_t from = inside ? static_cast<std::size_t>(indices[i]) : 0;
    std::memcpy(view + i * kBytes, frame + from * kBytes, kBytes);
    if (!inside) std::memset(view + i * kBytes, 0, kBytes);
    mask[i] = inside ? 0 : 255;
  }
}

}  // namespace

GatherWithReadyPositions::GatherWithReadyPositions(const Scene& scene)
    : indices_(scene.viewPixels()) {
  constexpr unsigned char kOutside = 255;  // four of them: -1
  const cv::Mat warped =
      plain::warpByInverseHomography(numberedRawPixels(scene), scene.H().inv(), scene.param.ImageDx,
                                     scene.param.ImageDy, kOutside);
  plain::storeInBuffer(warped, reinterpret_cast<unsigned char*>(indices_.data()));
}

void GatherWithReadyPositions::run(const Scene& scene, View& view) const {
  const auto gather = scene.bitCount == 8    ? gatherPixels<1>
                      : scene.bitCount == 24 ? gatherPixels<3>
                                             : gatherPixels<4>;
  gather(indices_, scene.frame.data(), view.pixels.data(), view.mask.data());
}

}  // namespace bench
