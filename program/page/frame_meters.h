// What the sequence of frames tells: their rate, and whether the picture is still.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <opencv2/core.hpp>

namespace fisheye_calibration::program {

// Still if no thumbnail of the last half second differs much from the newest one.
class StillnessMeter {
 public:
  using Time = std::chrono::steady_clock::time_point;
  bool add(const cv::Mat& grey, Time time);

 private:
  struct Seen {
    cv::Mat thumbnail;
    Time time;
  };
  std::deque<Seen> seen_;  // the oldest first, a little more than half a second
};

// Frames per second, from their numbers, so that frames that nobody looked at count, too.
class RateMeter {
 public:
  using Time = std::chrono::steady_clock::time_point;
  void add(std::uint64_t number, Time time);
  double perSecond() const { return perSecond_; }
  // At most four times a second.
  bool isTime(Time now);

 private:
  std::uint64_t firstNumber_ = 0;
  Time first_;
  double perSecond_ = 0;
  Time told_;
};

}  // namespace fisheye_calibration::program
