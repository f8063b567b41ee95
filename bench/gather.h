#pragma once

#include <vector>

#include "contestants.h"
#include "scenes.h"

namespace bench {

// The least that any renderer does: one nearest pixel and one mask byte per pixel, read from
// positions that are ready as 32-bit indices; without interpolation or geometry.
class GatherWithReadyPositions {
 public:
  explicit GatherWithReadyPositions(const Scene& scene);

  void run(const Scene& scene, View& view) const;

 private:
  std::vector<int> indices_;  // of the frame's pixels in the view's buffer order; -1 outside
};

}  // namespace bench
