// What sources and jobs tell the session.
#include <algorithm>
#include <cmath>

#include "page/session.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kStillPoint = 1.5;  // px that a point of a steady target may move between searches
constexpr double kWorthwhile = 0.9;  // of the present bound: a view that leaves less is useful

// Whether the points of two searches are the same ones at the same places.
bool sameplaced(const std::vector<CalibrationPoint>& a, const std::vector<CalibrationPoint>& b) {
  if (a.empty() || b.empty()) {
    return false;
  }
  std::size_t shared = 0;
  for (const CalibrationPoint& point : a) {
    const auto other = std::find_if(b.begin(), b.end(), [&](const CalibrationPoint& candidate) {
      return candidate.PointId == point.PointId;
    });
    if (other != b.end()) {
      ++shared;
      if (std::hypot(other->ImagePtX - point.ImagePtX, other->ImagePtY - point.ImagePtY) >
          static_cast<float>(kStillPoint)) {
        return false;
      }
    }
  }
  return 2 * shared > a.size();
}

// False if it was reset in the meantime, and perhaps begun anew.
bool isExpected(const CalibrationState& calibration, int revision) {
  return calibration.status == JobStatus::kRunning && calibration.revision == revision;
}

// The picture shows what a view that has been taken shows. It would count as new information, which
// it is not.
bool isTakenAlready(const SourceState& source) {
  return std::any_of(source.views.begin(), source.views.end(), [&](const TakenView& view) {
    return sameplaced(view.points, source.search->points);
  });
}

}  // namespace

void Session::sourceLive(std::size_t index) {
  SourceState& source = sources_.at(index);
  if (source.status != SourceStatus::kLive && !source.other) {
    source.status = SourceStatus::kLive;
    source.message.clear();
    changed();
  }
}

void Session::sourceLost(std::size_t index, const std::string& message) {
  SourceState& source = sources_.at(index);
  if (source.status == SourceStatus::kLost && source.message == message) {
    return;
  }
  source.status = SourceStatus::kLost;
  source.message = message;
  source.rate.reset();
  source.still = false;
  source.search.reset();
  source.forgetGain();
  changed();
}

// Of another camera, or of another mode of it, that may be gone again soon: the views wait.
bool Session::keepsSize(std::size_t index, const Size& image) {
  SourceState& source = sources_.at(index);
  const bool hasWork = !source.views.empty() || source.calibration.status != JobStatus::kNone;
  if (source.image == image || !hasWork) {
    source.image = image;
    if (source.other) {
      source.other.reset();
      sourceLive(index);
    }
    return true;
  }
  source.other = image;
  sourceLost(index, source.name + ": the picture has " + sizeText(image) +
                        " pixels now, the views have " + sizeText(source.image) +
                        "; set the camera back, or begin again in step 5");
  return false;
}

void Session::measured(std::size_t index, const Size& image, double rate, const Exposure& exposure,
                       const Focus& focus, bool still) {
  SourceState& source = sources_.at(index);
  if (!keepsSize(index, image)) {
    return;
  }
  source.rate = rate;
  source.exposure = exposure;
  source.focus = focus;
  source.still = still;
  if (!still) {
    source.forgetGain();
  }
  changed();
}

Jobs Session::searched(std::size_t index, const SearchResult& result, double rate) {
  SourceState& source = sources_.at(index);
  if (!target_ || result.image != source.image) {
    return {};
  }
  source.pointsStill = source.search && sameplaced(source.search->points, result.points);
  source.search = result;
  source.searchRate = rate;
  changed();
  if (!source.steady()) {
    source.forgetGain();
    return {};
  }
  if (!result.exact || source.gainAsked || step_ != 2 ||
      (!source.views.empty() && !source.expectation)) {
    return {};
  }
  source.gainAsked = true;
  return {{Job::Kind::kGain, index}};
}

void Session::searchStopped(std::size_t index) {
  SourceState& source = sources_.at(index);
  if (source.search) {
    source.search.reset();
    source.searchRate.reset();
    source.pointsStill = false;
    source.forgetGain();
    changed();
  }
}

void Session::frameSent(std::size_t index, double age) { sources_.at(index).age = age; }

int Session::calibrationBegins(std::size_t index) {
  SourceState& source = sources_.at(index);
  if (source.calibration.status == JobStatus::kRunning) {
    source.calibration.revision = source.revision;
  }
  return source.revision;
}

void Session::calibrationStep(std::size_t index, int revision, double progress,
                              const std::string& step) {
  CalibrationState& calibration = sources_.at(index).calibration;
  if (isExpected(calibration, revision)) {
    calibration.progress = progress;
    calibration.step = step;
    changed();
  }
}

void Session::calibrationDone(std::size_t index, int revision,
                              const std::shared_ptr<const CalibrationOutcome>& outcome) {
  CalibrationState& calibration = sources_.at(index).calibration;
  if (!isExpected(calibration, revision)) {
    return;
  }
  calibration = {
      .status = JobStatus::kDone, .progress = 1, .revision = revision, .outcome = outcome};
  sources_.at(index).verify = {};
  stitch_ = {};
  forgetSaved();
  changed();
}

void Session::calibrationFailed(std::size_t index, int revision, const std::string& message) {
  CalibrationState& calibration = sources_.at(index).calibration;
  if (isExpected(calibration, revision)) {
    calibration.status = JobStatus::kFailed;
    calibration.message = message;
    calibration.outcome.reset();
    stitch_ = {};
    changed();
  }
}

void Session::expectationDone(std::size_t index, int revision, const Expectation& expectation) {
  SourceState& source = sources_.at(index);
  if (source.revision == revision) {
    source.expectation = expectation;
    changed();
  }
}

void Session::expectationFailed(std::size_t index, int revision, const std::string& message) {
  SourceState& source = sources_.at(index);
  if (source.revision == revision) {
    source.noExpectation = message;
    changed();
  }
}

Jobs Session::gainDone(std::size_t index, int revision, int steadyTime, double after) {
  SourceState& source = sources_.at(index);
  if (source.revision != revision || source.steadyTime != steadyTime || !source.ready()) {
    return {};
  }
  Gain gain{.after = after};
  if (source.expectation) {
    gain.before = source.expectation->onBed;
  }
  gain.useful = !isTakenAlready(source) &&
                (!gain.before || (std::isfinite(after) && after < kWorthwhile * *gain.before));
  source.gain = gain;
  changed();
  return autoTake_ && gain.useful ? take(source, index) : Jobs();
}

void Session::verifyDone(std::size_t index, const BedMotion& motion) {
  VerifyState& verify = sources_.at(index).verify;
  if (verify.status == JobStatus::kRunning) {
    verify.status = JobStatus::kDone;
    verify.motion = motion;
    changed();
  }
}

void Session::verifyFailed(std::size_t index, const std::string& message) {
  VerifyState& verify = sources_.at(index).verify;
  if (verify.status == JobStatus::kRunning) {
    verify.status = JobStatus::kFailed;
    verify.message = message;
    changed();
  }
}

void Session::stitchDone(const std::shared_ptr<const StitchOutcome>& outcome) {
  if (stitch_.status == JobStatus::kRunning) {
    stitch_ = {.status = JobStatus::kDone, .message = "", .outcome = outcome};
    forgetSaved();
    changed();
  }
}

void Session::stitchFailed(const std::string& message) {
  if (stitch_.status == JobStatus::kRunning) {
    stitch_ = {.status = JobStatus::kFailed, .message = message, .outcome = nullptr};
    changed();
  }
}

void Session::saved(const std::vector<std::string>& files, const std::string& note) {
  saved_ = {.files = files, .note = note, .count = saved_.count + 1};
  changed();
}

}  // namespace fisheye_calibration::program
