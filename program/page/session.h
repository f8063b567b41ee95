// What all pages see: the state of a set-up of one or two cameras, and how it changes. No threads,
// no sockets and no clock, so that every transition can be tested by itself.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/size.h"
#include "calibration/bed_motion.h"
#include "page/actions.h"
#include "page/calibration_job.h"
#include "page/picture_quality.h"
#include "page/stitch_job.h"

namespace fisheye_calibration::program {

enum class SourceStatus { kOpening, kLive, kLost };
enum class JobStatus { kNone, kRunning, kDone, kFailed };

// What a search for the target gave.
struct SearchResult {
  std::uint64_t frame = 0;
  Size image;
  std::vector<CalibrationPoint> points;  // empty: the target was not found
  std::string seen;                      // then: what is there instead
  bool exact = true;                     // measured in the whole picture, fit for a view
  cv::Mat picture;                       // grey, in which they were found
};

struct TakenView {
  int id = 0;
  std::uint64_t frame = 0;
  std::vector<CalibrationPoint> points;
  cv::Mat picture;  // grey
};

// What the view in the picture would add.
struct Gain {
  std::optional<double> before;  // mm on the bed; nothing before the first view
  double after = 0;              // mm
  bool useful = false;
};

struct CalibrationState {
  JobStatus status = JobStatus::kNone;
  double progress = 0;
  std::string step;
  std::string message;  // why it failed
  bool accepted = false;
  int revision = 0;  // of the source's views, when it began
  std::shared_ptr<const CalibrationOutcome> outcome;
};

struct VerifyState {
  JobStatus status = JobStatus::kNone;
  BedMotion motion;
  double limit = 0;  // mm
  std::string message;
};

struct StitchState {
  JobStatus status = JobStatus::kNone;
  std::string message;
  std::shared_ptr<const StitchOutcome> outcome;
};

struct SavedState {
  std::vector<std::string> files;
  std::string note;
  int count = 0;  // how often
};

struct SourceState {
  std::string name;
  SourceStatus status = SourceStatus::kOpening;
  std::string message;
  Size image;                  // of the views and the calibration, if there are any
  std::optional<Size> other;   // that the picture has now, if it is not that
  std::optional<double> rate;  // frames per second
  std::optional<double> age;   // ms from capture to JPEG
  std::optional<Exposure> exposure;
  std::optional<Focus> focus;
  bool still = false;        // the picture has not changed for a while
  bool pointsStill = false;  // nor have the found points
  std::optional<SearchResult> search;
  std::optional<double> searchRate;
  std::optional<Gain> gain;
  bool gainAsked = false;  // since the picture has been steady
  int steadyTime = 0;      // number of the time since then, to know whose gain a result is
  std::vector<TakenView> views;
  int bedView = 0;  // id
  int nextView = 1;
  int revision = 0;  // of what a calibration depends on
  std::optional<Expectation> expectation;
  std::string noExpectation;  // why there is none
  CalibrationState calibration;
  VerifyState verify;

  void forgetGain() {
    gain.reset();
    gainAsked = false;
    ++steadyTime;
  }
  bool steady() const { return still && pointsStill; }
  bool found() const { return search && !search->points.empty(); }
  // A view can be taken now.
  bool ready() const { return found() && steady() && search->exact; }
};

// Work that an action asks for, to be done elsewhere.
struct Job {
  enum class Kind { kCalibrate, kExpect, kGain, kVerify, kStitch, kSave } kind;
  std::size_t source = 0;
};
using Jobs = std::vector<Job>;

class Session {
 public:
  // With the folder for files as it is shown; empty if there is none.
  Session(const std::vector<std::string>& sources, const std::string& folder);

  // Actions of a page. Refusals are Failures with a text for the person.
  Jobs apply(const Action& action);

  // Events of a source.
  void sourceLive(std::size_t index);
  void sourceLost(std::size_t index, const std::string& message);
  void measured(std::size_t index, const Size& image, double rate, const Exposure& exposure,
                const Focus& focus, bool still);
  // Returns the calculation of the gain if it is time for it.
  Jobs searched(std::size_t index, const SearchResult& result, double rate);
  void searchStopped(std::size_t index);
  void frameSent(std::size_t index, double age);

  // Results of jobs. Those that belong to views that have changed since are dropped or marked.
  // The views that are there when it begins count. Returns their revision.
  int calibrationBegins(std::size_t index);
  void calibrationStep(std::size_t index, int revision, double progress, const std::string& step);
  void calibrationDone(std::size_t index, int revision,
                       const std::shared_ptr<const CalibrationOutcome>& outcome);
  void calibrationFailed(std::size_t index, int revision, const std::string& message);
  void expectationDone(std::size_t index, int revision, const Expectation& expectation);
  void expectationFailed(std::size_t index, int revision, const std::string& message);
  // Returns further jobs if the view was taken, because pages wish for that.
  Jobs gainDone(std::size_t index, int revision, int steadyTime, double after);
  void verifyDone(std::size_t index, const BedMotion& motion);
  void verifyFailed(std::size_t index, const std::string& message);
  void stitchDone(const std::shared_ptr<const StitchOutcome>& outcome);
  void stitchFailed(const std::string& message);
  // With what there is to say of them.
  void saved(const std::vector<std::string>& files, const std::string& note);

  // What a calibration of the views would work on; `with` is added to them.
  CalibrationWish wishOf(std::size_t index,
                         const std::vector<CalibrationPoint>* with = nullptr) const;

  // Whether the target is to be looked for.
  bool wantsSearch() const { return target_.has_value() && step_ <= 3; }
  bool isOutdated(std::size_t source) const {
    return at(source).calibration.revision != at(source).revision;
  }

  const SourceState& at(std::size_t source) const { return sources_.at(source); }
  std::size_t sourceCount() const { return sources_.size(); }
  const std::optional<ChosenTarget>& target() const { return target_; }
  const std::optional<cv::Rect2d>& bed() const { return bed_; }
  double tolerance() const { return tolerance_; }
  int step() const { return step_; }
  bool autoTake() const { return autoTake_; }
  const std::string& folder() const { return folder_; }
  const StitchState& stitch() const { return stitch_; }
  // Of the present calibrations.
  const SavedState& saved() const { return saved_; }
  std::uint64_t number() const { return number_; }

 private:
  Jobs takeViews(const std::optional<std::size_t>& which);
  Jobs take(SourceState& source, std::size_t index);
  Jobs begin(Job::Kind kind, const std::optional<std::size_t>& which);
  Jobs beginStitch();
  Jobs beginSave();
  void beginVerify(std::size_t index);
  void accept(const std::optional<std::size_t>& which);
  void choose(const ChosenTarget& chosen);
  void forgetViews(SourceState& source);
  void forgetSaved() { saved_ = {.files = {}, .note = "", .count = saved_.count}; }
  bool keepsSize(std::size_t index, const Size& image);
  Jobs viewsChanged(std::size_t index);
  Jobs bedChanged();
  Jobs deleteView(const DeleteView& action);
  Jobs setBedView(const SetBedView& action);
  std::vector<std::size_t> meant(const std::optional<std::size_t>& source) const;
  void changed() { ++number_; }

  std::vector<SourceState> sources_;
  std::string folder_;
  std::optional<ChosenTarget> target_;
  std::optional<cv::Rect2d> bed_;
  double tolerance_ = 0;
  int step_ = 1;
  bool autoTake_ = false;
  StitchState stitch_;
  SavedState saved_;
  std::uint64_t number_ = 1;
};

}  // namespace fisheye_calibration::program
