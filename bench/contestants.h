// Ways of making a corrected view, or a part of it.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "scenes.h"

namespace bench {

struct View {
  explicit View(const Scene& scene);  // filled with a value of its own, so that gaps show

  bool operator==(const View&) const = default;

  Bytes pixels;
  Bytes mask;
};

// SingleCamCorrected and its plain derivation, step by step, maps included. Both return what the
// function returned.
bool renderOurs(Scene& scene, View& view);
bool renderPlainly(const Scene& scene, View& view);

// Whether the library gives the plain derivation's bytes, on each instruction set and with each
// number of threads. Names the differences on standard error.
bool givesPlainBytes(Scene& scene, const std::vector<std::int64_t>& instructionSets,
                     const std::vector<int>& threadCounts = {1});

// The image library's remap and nearest warp of frame and mask with maps made beforehand: neither
// the making of the maps nor the frame's way from and to the buffers. Frame and view have one size.
class WarpWithReadyMaps {
 public:
  explicit WarpWithReadyMaps(Scene& scene);

  void run();

 private:
  cv::Mat frame_, blank_, H_, map1_, map2_, outside_, undistorted_, view_, mask_;
};

}  // namespace bench
