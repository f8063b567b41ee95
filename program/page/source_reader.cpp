#include "page/source_reader.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <exception>
#include <future>
#include <mutex>
#include <optional>
#include <thread>

#include "base/failure.h"
#include "base/text.h"

namespace fisheye_calibration::program {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds kRepeat{200};        // between repeats of a still picture
constexpr milliseconds kEachPicture{2000};  // for which a folder's picture is shown
constexpr milliseconds kLeave{1500};        // for the thread to end
constexpr milliseconds kFaulty{2000};       // of broken frames only, then a camera is opened anew
constexpr double kUsualRate = 25;           // of videos that do not state it, frames/s

}  // namespace

milliseconds pauseBeforeAttempt(int failures) {
  constexpr std::array<int, 4> kPauses = {500, 1000, 2000, 4000};
  const auto index = static_cast<std::size_t>(std::max(0, failures - 1));
  return milliseconds(index < kPauses.size() ? kPauses[index] : 5000);
}

// All that the thread uses, so that it may outlive the reader.
struct SourceReader::Shared {
  std::string text;
  SourceOpener open;
  std::shared_ptr<FrameSlot> slot;
  ReaderEvents events;
  std::mutex mutex;
  std::condition_variable wake;
  bool stopped = false;
  std::promise<void> ended;
  std::future<void> end = ended.get_future();
  int failures = 0;
  std::string fault;  // of the newest frame

  bool isStopped() {
    const std::lock_guard lock(mutex);
    return stopped;
  }

  // False once the reader is to end.
  bool pause(milliseconds time) {
    std::unique_lock lock(mutex);
    return !wake.wait_for(lock, time, [&] { return stopped; });
  }

  // Events go to their owner, which is there until `stopped` is set under the lock.
  void tellLost(const std::string& why) {
    const std::lock_guard lock(mutex);
    if (!stopped) {
      events.lost(why);
    }
  }

  void publish(const cv::Mat& picture) {
    failures = 0;
    slot->publish(picture);
    const std::lock_guard lock(mutex);
    if (!stopped) {
      events.live();
    }
  }

  // Shows a still picture for the given time, or for ever.
  void hold(const cv::Mat& picture, std::optional<milliseconds> time) {
    const auto until = Clock::now() + time.value_or(milliseconds(0));
    do {
      publish(picture);
    } while (pause(kRepeat) && (!time || Clock::now() < until));
  }

  // Reads until the source ends. Returns whether it gave any frame.
  bool readAll(FrameSource& source) {
    const SourceKind kind = source.kind();
    const double rate = source.rate() > 0 ? source.rate() : kUsualRate;
    bool any = false;
    Clock::time_point due = Clock::now();
    Clock::time_point whole = Clock::now();
    fault.clear();
    while (!isStopped()) {
      std::optional<SourceFrame> frame = source.next();
      if (!frame) {
        break;
      }
      if (frame->picture.empty()) {  // broken; the next one may be whole
        fault = frame->fault;
        const bool isLive = kind == SourceKind::kDevice || kind == SourceKind::kStream;
        if (isLive && Clock::now() - whole > kFaulty) {
          break;
        }
        continue;
      }
      any = true;
      whole = Clock::now();
      fault.clear();
      if (kind == SourceKind::kPicture || kind == SourceKind::kFolder) {
        const bool alone = kind == SourceKind::kPicture;
        hold(frame->picture, alone ? std::nullopt : std::optional(kEachPicture));
        continue;
      }
      publish(frame->picture);
      if (kind == SourceKind::kVideo) {
        due = std::max(due + std::chrono::duration_cast<Clock::duration>(
                                 std::chrono::duration<double>(1 / rate)),
                       Clock::now() - milliseconds(100));
        pause(std::max(milliseconds(0),
                       std::chrono::duration_cast<milliseconds>(due - Clock::now())));
      }
    }
    return any;
  }

  // Why the source gives no frame; empty if it is to begin again at once.
  std::string attempt() {
    try {
      const std::unique_ptr<FrameSource> source = open(text);
      const bool any = readAll(*source);
      const bool repeats =
          source->kind() != SourceKind::kDevice && source->kind() != SourceKind::kStream;
      if (any && repeats) {
        return "";
      }
      return sourceName(text) + (any ? ": gives no more frames" : ": gives no frame") +
             (fault.empty() ? "" : " (" + fault + ")");
    } catch (const std::exception& failure) {
      return onOneLine(failure.what());
    }
  }

  void run() {
    while (!isStopped()) {
      const std::string why = attempt();
      if (why.empty()) {
        continue;
      }
      const milliseconds time = pauseBeforeAttempt(++failures);
      tellLost(why + "; next try in " + general(static_cast<double>(time.count()) / 1000, 2) +
               " s");
      if (!pause(time)) {
        return;
      }
    }
  }
};

SourceReader::SourceReader(std::string text, SourceOpener open, std::shared_ptr<FrameSlot> slot,
                           ReaderEvents events)
    : shared_(std::make_shared<Shared>()) {
  shared_->text = std::move(text);
  shared_->open = std::move(open);
  shared_->slot = std::move(slot);
  shared_->events = std::move(events);
  std::thread([shared = shared_] {
    shared->run();
    shared->ended.set_value();
  }).detach();
}

SourceReader::~SourceReader() {
  {
    const std::lock_guard lock(shared_->mutex);
    shared_->stopped = true;
  }
  shared_->wake.notify_all();
  shared_->end.wait_for(kLeave);
}

}  // namespace fisheye_calibration::program
