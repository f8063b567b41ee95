// Rows of an image split over the image library's threads.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <opencv2/core/utility.hpp>
#include <utility>
#include <vector>

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

// What threads need for their work, handed from one range of rows to the next. All of it is made
// beforehand, so that where memory does not suffice no row has been worked on.
template <class Tool>
class ThreadTools {
 public:
  // make() returns a unique_ptr<Tool>.
  template <class Make>
  ThreadTools(int ranges, const Make& make) {
    const auto count = static_cast<std::size_t>(std::max(std::min(ranges, rowThreads()), 1));
    idle_.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
      idle_.push_back(make());
    }
  }

  // Calls work(tool) with a tool that nobody else has meanwhile.
  template <class Work>
  void lend(const Work& work) {
    const Loan loan(*this);
    work(loan.tool());
  }

 private:
  class Loan {
   public:
    explicit Loan(ThreadTools& tools) : tools_(tools), tool_(tools.take()) {}
    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;
    ~Loan() { tools_.giveBack(std::move(tool_)); }
    Tool& tool() const { return *tool_; }

   private:
    ThreadTools& tools_;
    std::unique_ptr<Tool> tool_;
  };

  std::unique_ptr<Tool> take() {
    std::unique_lock lock(mutex_);
    returned_.wait(lock, [this] { return !idle_.empty(); });
    std::unique_ptr<Tool> tool = std::move(idle_.back());
    idle_.pop_back();
    return tool;
  }

  void giveBack(std::unique_ptr<Tool> tool) {
    const std::lock_guard lock(mutex_);
    idle_.push_back(std::move(tool));  // into reserved memory
    returned_.notify_one();
  }

  std::mutex mutex_;
  std::condition_variable returned_;
  std::vector<std::unique_ptr<Tool>> idle_;
};

}  // namespace fisheye_calibration::platform
