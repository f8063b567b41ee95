// The newest frame of a source: one thread fills it, others wait for it. Older frames are gone, so
// that nothing queues however slow or fast source and readers are.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <opencv2/core.hpp>

namespace fisheye_calibration::program {

struct Frame {
  cv::Mat picture;
  std::uint64_t number = 0;  // from 1
  std::chrono::steady_clock::time_point captured;
  std::chrono::system_clock::time_point wallClock;
};
using FramePointer = std::shared_ptr<const Frame>;

class FrameSlot {
 public:
  void publish(const cv::Mat& picture) {
    auto frame = std::make_shared<Frame>();
    frame->picture = picture;
    frame->captured = std::chrono::steady_clock::now();
    frame->wallClock = std::chrono::system_clock::now();
    {
      const std::lock_guard lock(mutex_);
      frame->number = newest_ ? newest_->number + 1 : 1;
      newest_ = std::move(frame);
    }
    changed_.notify_all();
  }

  FramePointer newest() const {
    const std::lock_guard lock(mutex_);
    return newest_;
  }

  // The newest frame with a number beyond `after`; null if none comes in time or the slot is
  // closed.
  FramePointer newerThan(std::uint64_t after, std::chrono::milliseconds wait) const {
    std::unique_lock lock(mutex_);
    const auto isThere = [&] { return newest_ && newest_->number > after; };
    changed_.wait_for(lock, wait, [&] { return closed_ || isThere(); });
    return isThere() ? newest_ : nullptr;
  }

  // Wakes all who wait; nobody waits any more.
  void close() {
    {
      const std::lock_guard lock(mutex_);
      closed_ = true;
    }
    changed_.notify_all();
  }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  FramePointer newest_;
  bool closed_ = false;
};

}  // namespace fisheye_calibration::program
