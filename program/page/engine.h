// Cameras, searches and calculations around a session: everything that runs by itself.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "page/session.h"
#include "page/session_json.h"
#include "page/source_reader.h"
#include "page/target_search.h"

namespace fisheye_calibration::program {

struct EngineSetup {
  std::vector<std::string> sources;  // one or two
  SourceOpener open = openSource;
  std::filesystem::path folder;  // for files; empty: none
  std::string version;
};

class Engine {
 public:
  explicit Engine(const EngineSetup& setup);
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;
  ~Engine();

  // Wakes everybody who waits; nothing new begins.
  void stop();
  bool stopped() const { return stopped_; }

  // Carries out a page's action and returns the number of the state that shows it. Fails like
  // Session::apply.
  std::uint64_t apply(const Action& action);

  // The state as text, when its number differs from `after` or the time is over.
  struct Snapshot {
    std::uint64_t number = 0;
    std::shared_ptr<const std::string> text;
  };
  Snapshot snapshot();
  Snapshot snapshotAfter(std::uint64_t after, std::chrono::milliseconds wait);

  // The last search of every source as text, with a number that grows with each.
  struct Points {
    std::uint64_t number = 0;
    std::string text;
  };
  std::vector<Points> points();

  std::size_t sourceCount() const { return slots_.size(); }
  const FrameSlot& frames(std::size_t source) const { return *slots_.at(source); }
  std::shared_ptr<const CalibrationOutcome> outcome(std::size_t source);
  std::shared_ptr<const StitchOutcome> stitch();
  void frameSent(std::size_t source, double age);

 private:
  void save();
  void analyse(std::size_t source);
  void measure(std::size_t source, const Frame& frame, const cv::Mat& grey, double rate,
               bool still);
  void search(std::size_t source, const Frame& frame, const cv::Mat& grey, bool still,
              TargetTracker& tracker);
  void work();
  void carryOut(const Job& job);
  void calibrate(std::size_t source);
  void expect(std::size_t source);
  void gain(std::size_t source);
  void verify(std::size_t source);
  void stitchFrames();
  void enqueue(const Jobs& jobs);  // with the lock held

  // Changes the session under the lock, queues the jobs that it returns and wakes the pages.
  template <class Change>
  void change(const Change& change) {
    {
      const std::lock_guard lock(mutex_);
      change(session_);
    }
    changed_.notify_all();
  }

  std::filesystem::path folder_;
  Instance instance_;
  std::atomic<bool> stopped_ = false;

  std::mutex mutex_;  // of what follows
  std::condition_variable changed_;
  Session session_;
  std::deque<Job> jobs_;
  std::vector<Points> points_;
  Snapshot cached_;

  std::vector<std::shared_ptr<FrameSlot>> slots_;
  std::vector<std::unique_ptr<SourceReader>> readers_;
  std::vector<std::thread> threads_;
};

}  // namespace fisheye_calibration::program
