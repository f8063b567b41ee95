#include "page/engine.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "base/failure.h"
#include "base/file_path.h"
#include "page/frame_meters.h"
#include "page/request_checks.h"
#include "sources/frame_source.h"

namespace fisheye_calibration::program {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kSilence{3000};        // after which a source counts as lost
constexpr milliseconds kShortestSearch{100};  // no more than 10 searches a second

std::vector<std::string> shownNames(std::vector<std::string> sources) {
  std::transform(sources.begin(), sources.end(), sources.begin(), sourceName);
  return sources;
}

}  // namespace

Engine::Engine(const EngineSetup& setup)
    : folder_(setup.folder),
      instance_{newToken().substr(0, 16), setup.version},
      session_(shownNames(setup.sources), nameOf(setup.folder)),
      points_(setup.sources.size()) {
  for (std::size_t i = 0; i < setup.sources.size(); ++i) {
    slots_.push_back(std::make_shared<FrameSlot>());
  }
  for (std::size_t i = 0; i < setup.sources.size(); ++i) {
    const ReaderEvents events{.live =
                                  [this, i] {
                                    bool isNew = false;
                                    {
                                      const std::lock_guard lock(mutex_);
                                      isNew = session_.at(i).status != SourceStatus::kLive;
                                      session_.sourceLive(i);
                                    }
                                    if (isNew) {
                                      changed_.notify_all();
                                    }
                                  },
                              .lost =
                                  [this, i](const std::string& why) {
                                    change([&](Session& session) { session.sourceLost(i, why); });
                                  }};
    readers_.push_back(
        std::make_unique<SourceReader>(setup.sources[i], setup.open, slots_[i], events));
    threads_.emplace_back([this, i] { analyse(i); });
  }
  threads_.emplace_back([this] { work(); });
}

Engine::~Engine() {
  stop();
  for (std::thread& thread : threads_) {
    thread.join();
  }
  readers_.clear();
}

void Engine::stop() {
  {
    const std::lock_guard lock(mutex_);
    stopped_ = true;
  }
  changed_.notify_all();
  for (const auto& slot : slots_) {
    slot->close();
  }
}

std::uint64_t Engine::apply(const Action& action) {
  change([&](Session& session) { enqueue(session.apply(action)); });
  if (std::holds_alternative<Save>(action)) {
    save();
  }
  const std::lock_guard lock(mutex_);
  return session_.number();
}

void Engine::enqueue(const Jobs& jobs) {
  for (const Job& job : jobs) {
    if (job.kind == Job::Kind::kSave) {
      continue;
    }
    // The newest views count: an expectation that has not begun is made once for all of them.
    std::erase_if(jobs_, [&](const Job& other) {
      return other.source == job.source && other.kind == job.kind;
    });
    jobs_.push_back(job);
  }
}

Engine::Snapshot Engine::snapshot() {
  const std::lock_guard lock(mutex_);
  if (!cached_.text || cached_.number != session_.number()) {
    cached_ = {session_.number(),
               std::make_shared<const std::string>(snapshotOf(session_, instance_))};
  }
  return cached_;
}

Engine::Snapshot Engine::snapshotAfter(std::uint64_t after, milliseconds wait) {
  {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, wait, [&] { return stopped_ || session_.number() != after; });
  }
  return snapshot();
}

std::vector<Engine::Points> Engine::points() {
  const std::lock_guard lock(mutex_);
  return points_;
}

std::shared_ptr<const CalibrationOutcome> Engine::outcome(std::size_t source) {
  const std::lock_guard lock(mutex_);
  return session_.at(source).calibration.outcome;
}

std::shared_ptr<const StitchOutcome> Engine::stitch() {
  const std::lock_guard lock(mutex_);
  return session_.stitch().outcome;
}

void Engine::frameSent(std::size_t source, double age) {
  const std::lock_guard lock(mutex_);
  session_.frameSent(source, age);
}

// Looks at the newest frames of a source as fast as it can, but at no frame twice.
void Engine::analyse(std::size_t source) {
  StillnessMeter stillness;
  RateMeter rate;
  TargetTracker tracker;
  std::uint64_t last = 0;
  auto heard = std::chrono::steady_clock::now();
  while (!stopped_) {
    const FramePointer frame = slots_[source]->newerThan(last, milliseconds(500));
    const auto now = std::chrono::steady_clock::now();
    if (!frame) {
      if (last > 0 && now - heard > kSilence) {
        change([&](Session& session) {
          if (session.at(source).status == SourceStatus::kLive) {
            session.sourceLost(source, session.at(source).name + ": no frame has come for 3 s");
          }
        });
      }
      continue;
    }
    heard = now;
    last = frame->number;
    cv::Mat grey = frame->picture;
    if (grey.channels() == 3) {
      cv::cvtColor(frame->picture, grey, cv::COLOR_BGR2GRAY);
    }
    rate.add(frame->number, frame->captured);
    const bool still = stillness.add(grey, frame->captured);
    if (rate.isTime(now)) {
      measure(source, *frame, grey, rate.perSecond(), still);
    }
    search(source, *frame, grey, still, tracker);
  }
}

void Engine::measure(std::size_t source, const Frame& frame, const cv::Mat& grey, double rate,
                     bool still) {
  const Exposure exposure = exposureOf(grey);
  const Focus focus = focusOf(grey);
  change([&](Session& session) {
    session.measured(source, {.width = frame.picture.cols, .height = frame.picture.rows}, rate,
                     exposure, focus, still);
  });
}

void Engine::search(std::size_t source, const Frame& frame, const cv::Mat& grey, bool still,
                    TargetTracker& tracker) {
  std::optional<ChosenTarget> target;
  {
    const std::lock_guard lock(mutex_);
    if (session_.wantsSearch()) {
      target = session_.target();
    }
  }
  if (!target) {
    change([&](Session& session) { session.searchStopped(source); });
    return;
  }
  const auto start = std::chrono::steady_clock::now();
  SearchResult result = tracker.search(grey, *target, still, start);
  result.frame = frame.number;
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  change([&](Session& session) {
    if (session.target() != target) {
      return;  // chosen anew in the meantime
    }
    points_[source] = {points_[source].number + 1, pointsEvent(source, result)};
    enqueue(session.searched(source, result, tracker.perSecond()));
  });
  if (time < kShortestSearch) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, kShortestSearch - time, [&] { return stopped_.load(); });
  }
}

}  // namespace fisheye_calibration::program
