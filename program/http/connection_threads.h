// A thread for every connection. Pages wait for frames and events, so that a fixed number of
// threads would let a few idle connections keep everybody else out.
#pragma once

#include <httplib.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace fisheye_calibration::program {

class ConnectionThreads : public httplib::TaskQueue {
 public:
  explicit ConnectionThreads(std::size_t most) : most_(most) {}

  // Newer versions of the library ask whether the task was taken.
  using Taken = decltype(std::declval<httplib::TaskQueue&>().enqueue({}));

  Taken enqueue(std::function<void()> task) override {
    {
      const std::lock_guard lock(mutex_);
      waiting_.push_back(std::move(task));
      if (idle_ >= waiting_.size() || threads_ >= most_) {
        wake_.notify_one();
        return Taken(true);
      }
      ++threads_;
    }
    try {
      std::thread([this] { run(); }).detach();
    } catch (const std::system_error&) {  // no more threads: the ones there are go on
      const std::lock_guard lock(mutex_);
      --threads_;
      wake_.notify_one();
    }
    return Taken(true);
  }

  void shutdown() override {
    std::unique_lock lock(mutex_);
    ending_ = true;
    wake_.notify_all();
    ended_.wait(lock, [&] { return threads_ == 0; });
  }

 private:
  void run() {
    std::unique_lock lock(mutex_);
    while (true) {
      ++idle_;
      wake_.wait_for(lock, std::chrono::seconds(10), [&] { return ending_ || !waiting_.empty(); });
      --idle_;
      if (waiting_.empty()) {
        break;  // nothing to do for a while, or the end
      }
      const std::function<void()> task = std::move(waiting_.front());
      waiting_.pop_front();
      lock.unlock();
      try {
        task();
      } catch (...) {  // such as no memory: that connection is lost, the others go on
      }
      lock.lock();
    }
    --threads_;
    // Under the lock: afterwards this object may be gone.
    ended_.notify_all();
  }

  std::size_t most_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::condition_variable ended_;
  std::deque<std::function<void()>> waiting_;
  std::size_t idle_ = 0;
  std::size_t threads_ = 0;
  bool ending_ = false;
};

}  // namespace fisheye_calibration::program
