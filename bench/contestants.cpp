#include "contestants.h"

#include <cstdio>
#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>

#include "instruction_sets.h"
#include "support/chosen_instruction_set.h"
#include "support/plain_correction.h"

namespace bench {

View::View(const Scene& scene)
    : pixels(scene.viewPixels() * scene.bytesPerPixel(), 0xa5), mask(scene.viewPixels(), 0xa5) {}

bool renderOurs(Scene& scene, View& view) {
  return SingleCamCorrected(scene.frame.data(), scene.frameSize.width, scene.frameSize.height,
                            scene.bitCount, scene.param, view.pixels.data(), scene.viewSize.width,
                            scene.viewSize.height, view.mask.data());
}

bool renderPlainly(const Scene& scene, View& view) {
  return plain::singleCamCorrected(scene.frame.data(), scene.frameSize.width,
                                   scene.frameSize.height, scene.bitCount, scene.param,
                                   view.pixels.data(), scene.viewSize.width, scene.viewSize.height,
                                   view.mask.data());
}

bool givesPlainBytes(Scene& scene, const std::vector<std::int64_t>& instructionSets,
                     const std::vector<int>& threadCounts) {
  View plain(scene);
  bool agree = renderPlainly(scene, plain);
  if (!agree) std::fprintf(stderr, "the plain derivation shows nothing\n");
  for (const std::int64_t set : instructionSets) {
    for (const int threads : threadCounts) {
      const support::ChosenInstructionSet chosen(set);
      cv::setNumThreads(threads);
      View ours(scene);
      if (!renderOurs(scene, ours) || !(ours == plain)) {
        std::fprintf(stderr, "%d x %d, %d bits, %s, threads %d: the views differ\n",
                     scene.viewSize.width, scene.viewSize.height, scene.bitCount,
                     nameOf(set).c_str(), threads);
        agree = false;
      }
    }
  }
  cv::setNumThreads(1);
  return agree;
}

WarpWithReadyMaps::WarpWithReadyMaps(Scene& scene)
    : frame_(scene.frameSize, CV_8UC(static_cast<int>(scene.bytesPerPixel())), scene.frame.data()),
      blank_(scene.frameSize, CV_8UC1, cv::Scalar(0)) {
  plain::undistortRectifyMap(scene.K(), scene.D(), cv::Mat(), scene.K(), scene.viewSize, map1_,
                             map2_);
  const cv::Mat shift =
      (cv::Mat_<double>(3, 3) << 1, 0, scene.param.ImageDx, 0, 1, scene.param.ImageDy, 0, 0, 1);
  H_ = shift * scene.H();
}

void WarpWithReadyMaps::run() {
  cv::remap(blank_, outside_, map1_, map2_, cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar(255));
  cv::remap(frame_, undistorted_, map1_, map2_, cv::INTER_LINEAR, cv::BORDER_CONSTANT);
  cv::warpPerspective(undistorted_, view_, H_, map1_.size(), cv::INTER_NEAREST);
  cv::warpPerspective(outside_, mask_, H_, map1_.size(), cv::INTER_NEAREST, cv::BORDER_CONSTANT,
                      cv::Scalar(255));
}

}  // namespace bench
