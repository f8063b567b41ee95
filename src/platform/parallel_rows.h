// Rows of an image split over the image library's threads.
#pragma once

#include <opencv2/core/utility.hpp>

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace fisheye_calibration::platform {

// Work on ranges of rows. Annotates for ThreadSanitizer where threads start and are joined, which
// it cannot see in an image library that is built without it.
template <class Work>
class RowRanges final : public cv::ParallelLoopBody {
 public:
  explicit RowRanges(const Work& work) : work_(work) {}

  void operator()(const cv::Range& rows) const override {
    acquire();
    work_(rows.start, rows.end);
    release();
  }

  void release() const {
#if defined(__SANITIZE_THREAD__)
    __tsan_release(const_cast<RowRanges*>(this));
#endif
  }

  void acquire() const {
#if defined(__SANITIZE_THREAD__)
    __tsan_acquire(const_cast<RowRanges*>(this));
#endif
  }

 private:
  const Work& work_;
};

// Calls work(begin, end) for ranges that cover the rows 0 ... rows - 1, each row once. The calls
// may run concurrently.
template <class Work>
void forRowRanges(int rows, const Work& work) {
  const RowRanges<Work> ranges(work);
  ranges.release();
  cv::parallel_for_(cv::Range(0, rows), ranges);
  ranges.acquire();
}

// How many threads share the rows.
inline int rowThreads() { return cv::getNumThreads(); }

}  // namespace fisheye_calibration::platform
