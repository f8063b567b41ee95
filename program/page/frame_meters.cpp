#include "page/frame_meters.h"

#include "page/picture_quality.h"

namespace fisheye_calibration::program {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kStillTime{500};
constexpr milliseconds kWindow{2000};  // over which frames are counted
constexpr milliseconds kTell{250};
constexpr double kStillDifference = 12;  // grey levels of a thumbnail's pixel

}  // namespace

bool StillnessMeter::add(const cv::Mat& grey, Time time) {
  seen_.push_back({thumbnailOf(grey), time});
  // The oldest kept one is at least half a second old, so that the whole half second is covered.
  while (seen_.size() > 1 && time - seen_[1].time >= kStillTime) {
    seen_.pop_front();
  }
  if (time - seen_.front().time < kStillTime) {
    return false;
  }
  for (const Seen& seen : seen_) {
    if (largestDifference(seen.thumbnail, seen_.back().thumbnail) > kStillDifference) {
      return false;
    }
  }
  return true;
}

void RateMeter::add(std::uint64_t number, Time time) {
  if (firstNumber_ == 0) {
    firstNumber_ = number;
    first_ = time;
    return;
  }
  const std::chrono::duration<double> passed = time - first_;
  if (passed.count() > 0) {
    perSecond_ = static_cast<double>(number - firstNumber_) / passed.count();
  }
  if (passed >= kWindow) {
    firstNumber_ = number;
    first_ = time;
  }
}

bool RateMeter::isTime(Time now) {
  if (now - told_ < kTell) {
    return false;
  }
  told_ = now;
  return true;
}

}  // namespace fisheye_calibration::program
