#pragma once

#include <cstddef>

namespace bench {

// Peak number of bytes that `work` allocates, including the image library's, above the level at its
// start; -1 where allocations cannot be counted.
class AllocationPeak {
 public:
  template <class Work>
  static long of(Work&& work) {
    start();
    work();
    return stop();
  }

 private:
  static void start();
  static long stop();
};

}  // namespace bench
