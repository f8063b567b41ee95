// The calculations that the engine carries out, one after the other.
#include <new>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "base/failure.h"
#include "page/engine.h"
#include "page/saved_files.h"
#include "page/target_search.h"

namespace fisheye_calibration::program {
namespace {

// What a job says if it fails, whatever fails in it.
template <class Work, class Fail>
void attempt(const Work& work, const Fail& fail) {
  try {
    work();
  } catch (const std::bad_alloc&) {
    fail("not enough memory");
  } catch (const cv::Exception& failure) {
    fail("the image library cannot work on this (" + failure.err + ")");
  } catch (const std::exception& failure) {
    fail(std::string(failure.what()));
  }
}

}  // namespace

void Engine::work() {
  while (true) {
    Job job{};
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [&] { return stopped_ || !jobs_.empty(); });
      if (stopped_) {
        return;
      }
      job = jobs_.front();
      jobs_.pop_front();
    }
    carryOut(job);
  }
}

void Engine::carryOut(const Job& job) {
  switch (job.kind) {
    case Job::Kind::kCalibrate:
      return calibrate(job.source);
    case Job::Kind::kExpect:
      return expect(job.source);
    case Job::Kind::kGain:
      return gain(job.source);
    case Job::Kind::kVerify:
      return verify(job.source);
    case Job::Kind::kStitch:
      return stitchFrames();
    case Job::Kind::kSave:
      break;  // done at once, so that its failure is the answer
  }
}

void Engine::calibrate(std::size_t source) {
  CalibrationWish wish;
  int revision = 0;
  {
    const std::lock_guard lock(mutex_);
    wish = session_.wishOf(source);
    revision = session_.calibrationBegins(source);
  }
  attempt(
      [&] {
        const auto progress = [&](double share, const std::string& step) {
          change([&](Session& session) { session.calibrationStep(source, revision, share, step); });
        };
        auto outcome = std::make_shared<const CalibrationOutcome>(calibrated(wish, progress));
        change([&](Session& session) { session.calibrationDone(source, revision, outcome); });
      },
      [&](const std::string& why) {
        change([&](Session& session) { session.calibrationFailed(source, revision, why); });
      });
}

void Engine::expect(std::size_t source) {
  CalibrationWish wish;
  int revision = 0;
  {
    const std::lock_guard lock(mutex_);
    wish = session_.wishOf(source);
    revision = session_.at(source).revision;
  }
  if (wish.views.empty()) {
    return;
  }
  attempt(
      [&] {
        const Expectation expectation = expectationOf(wish);
        change([&](Session& session) { session.expectationDone(source, revision, expectation); });
      },
      [&](const std::string& why) {
        change([&](Session& session) { session.expectationFailed(source, revision, why); });
      });
}

void Engine::gain(std::size_t source) {
  CalibrationWish wish;
  int revision = 0;
  int steadyTime = 0;
  std::optional<Expectation> before;
  {
    const std::lock_guard lock(mutex_);
    const SourceState& state = session_.at(source);
    if (!state.found()) {
      return;
    }
    wish = session_.wishOf(source, &state.search->points);
    revision = state.revision;
    steadyTime = state.steadyTime;
    before = state.expectation;
  }
  attempt(
      [&] {
        const double after = before ? expectedAfter(wish, *before) : expectationOf(wish).onBed;
        change([&](Session& session) {
          enqueue(session.gainDone(source, revision, steadyTime, after));
        });
      },
      [](const std::string&) {});
}

void Engine::verify(std::size_t source) {
  std::shared_ptr<const CalibrationOutcome> outcome;
  std::optional<ChosenTarget> target;
  {
    const std::lock_guard lock(mutex_);
    outcome = session_.at(source).calibration.outcome;
    target = session_.target();
  }
  attempt(
      [&] {
        const FramePointer seen = slots_[source]->newest();
        // One more frame, so that what is measured was seen after the request.
        const FramePointer frame =
            slots_[source]->newerThan(seen ? seen->number : 0, std::chrono::seconds(3));
        if (!outcome || !target || !frame) {
          failJob("no frame has come from the camera; look at the source first");
        }
        const Size size{.width = frame->picture.cols, .height = frame->picture.rows};
        if (size != outcome->request.image) {
          failJob("the picture has " + sizeText(size) + " pixels now, the calibration is for " +
                  sizeText(outcome->request.image));
        }
        cv::Mat grey = frame->picture;
        if (grey.channels() == 3) {
          cv::cvtColor(frame->picture, grey, cv::COLOR_BGR2GRAY);
        }
        const SearchResult found = searchIn(grey, *target);
        if (found.points.empty()) {
          failJob("the target is not found in the picture; lay it where it belongs" +
                  (found.seen.empty() ? "" : " (" + found.seen + ")"));
        }
        const BedMotion motion = motionOf(*outcome, {"the picture", found.points});
        change([&](Session& session) { session.verifyDone(source, motion); });
      },
      [&](const std::string& why) {
        change([&](Session& session) { session.verifyFailed(source, why); });
      });
}

void Engine::save() {
  std::vector<std::shared_ptr<const CalibrationOutcome>> outcomes;
  std::shared_ptr<const StitchOutcome> stitch;
  {
    const std::lock_guard lock(mutex_);
    for (std::size_t i = 0; i < session_.sourceCount(); ++i) {
      outcomes.push_back(session_.at(i).calibration.outcome);
    }
    stitch = session_.stitch().outcome;
  }
  const SavedFiles files = saveFiles(folder_, outcomes, stitch);
  change([&](Session& session) { session.saved(files.names, files.note); });
}

void Engine::stitchFrames() {
  attempt(
      [&] {
        const auto left = outcome(0);
        const auto right = outcome(1);
        const FramePointer leftFrame = slots_[0]->newest();
        const FramePointer rightFrame = slots_[1]->newest();
        if (!left || !right || !leftFrame || !rightFrame) {
          failJob("both cameras must be there and calibrated");
        }
        auto result = std::make_shared<const StitchOutcome>(
            stitched(*left, leftFrame->picture, *right, rightFrame->picture));
        change([&](Session& session) { session.stitchDone(result); });
      },
      [&](const std::string& why) {
        change([&](Session& session) { session.stitchFailed(why); });
      });
}

}  // namespace fisheye_calibration::program
