// The frames of one simulated camera at a fixed rate, for any number of readers.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <opencv2/core.hpp>
#include <string>
#include <thread>

#include "simulation/frame_effects.h"

namespace fisheye_calibration::program {

struct StreamedFrame {
  std::uint64_t number = 0;                  // 1, 2, ...; 0: none yet
  std::shared_ptr<const std::string> bytes;  // a JPEG file
};

class FrameStream {
 public:
  FrameStream(double framesPerSecond, const cv::Mat& clean, const SensorNoise& noise);
  FrameStream(const FrameStream&) = delete;
  FrameStream& operator=(const FrameStream&) = delete;
  ~FrameStream();

  // What the next frames show; their noise starts anew.
  void show(const cv::Mat& clean, const SensorNoise& noise);

  // The newest frame once it is newer than the given one; after `patience` the newest there is, or
  // one without bytes. Frames are made only while somebody waits for them, and readers who are slow
  // miss some.
  StreamedFrame newerThan(std::uint64_t number, std::chrono::milliseconds patience);

 private:
  void produce();

  const std::chrono::duration<double> interval_;
  std::mutex mutex_;
  std::condition_variable wanted_;
  std::condition_variable made_;
  cv::Mat clean_;
  SensorNoise noise_;
  std::uint64_t shown_ = 0;  // frames of what is shown now
  StreamedFrame newest_;
  int waiting_ = 0;
  bool ending_ = false;
  std::thread thread_;  // last: it uses the others
};

}  // namespace fisheye_calibration::program
