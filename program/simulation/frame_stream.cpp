#include "simulation/frame_stream.h"

#include <algorithm>
#include <opencv2/imgcodecs.hpp>
#include <vector>

namespace fisheye_calibration::program {
namespace {

using Clock = std::chrono::steady_clock;

std::shared_ptr<const std::string> encoded(const cv::Mat& frame) {
  constexpr int kQuality = 92;
  std::vector<unsigned char> bytes;
  cv::imencode(".jpg", frame, bytes, {cv::IMWRITE_JPEG_QUALITY, kQuality});
  return std::make_shared<const std::string>(bytes.begin(), bytes.end());
}

}  // namespace

FrameStream::FrameStream(double framesPerSecond, const cv::Mat& clean, const SensorNoise& noise)
    : interval_(1 / framesPerSecond),
      clean_(clean),
      noise_(noise),
      thread_([this] { produce(); }) {}

FrameStream::~FrameStream() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  wanted_.notify_all();
  thread_.join();
}

void FrameStream::show(const cv::Mat& clean, const SensorNoise& noise) {
  const std::lock_guard lock(mutex_);
  clean_ = clean;
  noise_ = noise;
  shown_ = 0;
  newest_.bytes = nullptr;  // nobody is to get a frame of what was shown before
}

StreamedFrame FrameStream::newerThan(std::uint64_t number, std::chrono::milliseconds patience) {
  std::unique_lock lock(mutex_);
  ++waiting_;
  wanted_.notify_one();
  made_.wait_for(lock, patience, [&] { return newest_.bytes && newest_.number > number; });
  --waiting_;
  return newest_;
}

void FrameStream::produce() {
  Clock::time_point due = Clock::now();
  std::unique_lock lock(mutex_);
  while (true) {
    wanted_.wait(lock, [&] { return ending_ || waiting_ > 0; });
    if (wanted_.wait_until(lock, due, [&] { return ending_; })) {
      return;
    }
    // After a pause, no frames are made up for.
    const auto step = std::chrono::duration_cast<Clock::duration>(interval_);
    due = std::max(due + step, Clock::now());
    const cv::Mat clean = clean_;
    const SensorNoise noise = noise_;
    const std::uint64_t number = shown_++;
    lock.unlock();
    const auto bytes = encoded(noise.added(clean, number));
    lock.lock();
    if (clean.data == clean_.data) {  // otherwise something else is shown by now
      newest_ = {newest_.number + 1, bytes};
      made_.notify_all();
    }
  }
}

}  // namespace fisheye_calibration::program
