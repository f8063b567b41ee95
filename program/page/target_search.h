// One search for the target in a frame.
#pragma once

#include <chrono>
#include <opencv2/core.hpp>
#include <optional>

#include "page/frame_meters.h"
#include "page/session.h"

namespace fisheye_calibration::program {

// The exact search measures the points as `detect` does. The other one looks at large pictures in
// half their size, for showing where the points are while the target moves.
SearchResult searchIn(const cv::Mat& grey, const ChosenTarget& target, bool exact = true);

// Looks for the target frame by frame. A still picture is searched exactly, at most once a second,
// and what was found holds until then.
class TargetTracker {
 public:
  using Time = std::chrono::steady_clock::time_point;
  SearchResult search(const cv::Mat& grey, const ChosenTarget& target, bool still, Time now);

  // Results per second.
  double perSecond() const { return rate_.perSecond(); }

 private:
  std::optional<ChosenTarget> target_;
  std::optional<SearchResult> exact_;
  Time searched_;
  RateMeter rate_;
  std::uint64_t count_ = 0;
};

}  // namespace fisheye_calibration::program
