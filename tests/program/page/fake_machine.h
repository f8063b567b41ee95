// A camera whose picture and presence a test decides.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <opencv2/core.hpp>
#include <string>
#include <thread>

#include "base/failure.h"
#include "page/source_reader.h"

namespace fisheye_calibration::program {

struct FakeCamera {
  std::mutex mutex;
  cv::Mat picture;
  std::atomic<bool> present = true;
  std::atomic<int> periodMs = 20;  // between frames
  std::atomic<int> opened = 0;
  std::atomic<int> given = 0;  // frames

  void show(const cv::Mat& shown) {
    const std::lock_guard lock(mutex);
    picture = shown.clone();
  }
};

class FakeFrames : public FrameSource {
 public:
  FakeFrames(std::shared_ptr<FakeCamera> camera, SourceKind kind)
      : camera_(std::move(camera)), kind_(kind) {}

  std::optional<SourceFrame> next() override {
    std::this_thread::sleep_for(std::chrono::milliseconds(camera_->periodMs));
    if (!camera_->present) {
      return std::nullopt;
    }
    const std::lock_guard lock(camera_->mutex);
    ++camera_->given;
    return SourceFrame{camera_->picture.clone(), "fake",
                       camera_->picture.empty() ? "it is broken" : "", ""};
  }
  SourceKind kind() const override { return kind_; }
  double rate() const override { return 0; }
  std::optional<int> count() const override { return std::nullopt; }

 private:
  std::shared_ptr<FakeCamera> camera_;
  SourceKind kind_;
};

inline SourceOpener openerOf(const std::shared_ptr<FakeCamera>& camera,
                             SourceKind kind = SourceKind::kDevice) {
  return [camera, kind](const std::string& text) -> std::unique_ptr<FrameSource> {
    ++camera->opened;
    if (!camera->present) {
      failBadInput(text + ": cannot be opened");
    }
    return std::make_unique<FakeFrames>(camera, kind);
  };
}

// Whether something comes true within a time.
template <class Condition>
bool within(std::chrono::milliseconds time, const Condition& condition) {
  const auto end = std::chrono::steady_clock::now() + time;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

}  // namespace fisheye_calibration::program
