#pragma once

#include <cstddef>

namespace bench {

// The most bytes that `work` had allocated at any one time, over what was there when it began, with
// the image library's own; -1 where allocations cannot be watched.
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
