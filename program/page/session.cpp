#include "page/session.h"

#include <algorithm>
#include <numeric>

#include "base/failure.h"

namespace fisheye_calibration::program {
namespace {

constexpr std::size_t kMostViews = 60;

std::string viewName(const TakenView& view) { return "view " + std::to_string(view.id); }

const TakenView& viewOf(const SourceState& source, int id) {
  for (const TakenView& view : source.views) {
    if (view.id == id) {
      return view;
    }
  }
  failJob("that view is not there any more");
}

template <class... Callables>
struct Overloaded : Callables... {
  using Callables::operator()...;
};
template <class... Callables>
Overloaded(Callables...) -> Overloaded<Callables...>;

}  // namespace

Session::Session(const std::vector<std::string>& sources, const std::string& folder)
    : folder_(folder) {
  for (const std::string& name : sources) {
    sources_.emplace_back();
    sources_.back().name = name;
  }
}

std::vector<std::size_t> Session::meant(const std::optional<std::size_t>& source) const {
  if (source) {
    return {*source};
  }
  std::vector<std::size_t> all(sources_.size());
  std::iota(all.begin(), all.end(), std::size_t{0});
  return all;
}

Jobs Session::apply(const Action& action) {
  Jobs jobs = std::visit(
      Overloaded{[&](const SetStep& wish) {
                   step_ = wish.step;
                   return Jobs();
                 },
                 [&](const SetTarget& wish) {
                   choose(wish.chosen);
                   return Jobs();
                 },
                 [&](const SetBed& wish) {
                   bed_ = wish.bed;
                   return bedChanged();
                 },
                 [&](const SetTolerance& wish) {
                   tolerance_ = wish.tolerance;
                   return bedChanged();
                 },
                 [&](const SetAutoTake& wish) {
                   autoTake_ = wish.on;
                   for (SourceState& source : sources_) {
                     source.gainAsked = false;
                   }
                   return Jobs();
                 },
                 [&](const DeleteView& wish) { return deleteView(wish); },
                 [&](const SetBedView& wish) { return setBedView(wish); },
                 [&](const TakeView& wish) { return takeViews(wish.source); },
                 [&](const Calibrate& wish) { return begin(Job::Kind::kCalibrate, wish.source); },
                 [&](const Accept& wish) {
                   accept(wish.source);
                   return Jobs();
                 },
                 [&](const Verify& wish) { return begin(Job::Kind::kVerify, wish.source); },
                 [&](const Stitch&) { return beginStitch(); },
                 [&](const Save&) { return beginSave(); },
                 [&](const Reset&) {
                   for (SourceState& source : sources_) {
                     forgetViews(source);
                     source.calibration = {};
                   }
                   return Jobs();
                 }},
      action);
  changed();
  return jobs;
}

void Session::choose(const ChosenTarget& chosen) {
  target_ = chosen;
  for (SourceState& source : sources_) {
    forgetViews(source);
  }
}

void Session::forgetViews(SourceState& source) {
  source.views.clear();
  source.bedView = 0;
  ++source.revision;
  source.calibration.accepted = false;
  source.search.reset();
  source.pointsStill = false;
  source.forgetGain();
  source.expectation.reset();
  source.noExpectation.clear();
  source.verify = {};
  stitch_ = {};
  forgetSaved();
}

Jobs Session::viewsChanged(std::size_t index) {
  SourceState& source = sources_.at(index);
  ++source.revision;
  source.calibration.accepted = false;
  source.forgetGain();
  source.expectation.reset();
  source.noExpectation.clear();
  return source.views.empty() ? Jobs() : Jobs{{Job::Kind::kExpect, index}};
}

Jobs Session::bedChanged() {
  Jobs jobs;
  for (std::size_t i = 0; i < sources_.size(); ++i) {
    const Jobs more = viewsChanged(i);
    jobs.insert(jobs.end(), more.begin(), more.end());
  }
  return jobs;
}

Jobs Session::deleteView(const DeleteView& action) {
  SourceState& source = sources_.at(action.source);
  viewOf(source, action.view);
  std::erase_if(source.views, [&](const TakenView& view) { return view.id == action.view; });
  if (source.bedView == action.view) {
    source.bedView = source.views.empty() ? 0 : source.views.front().id;
  }
  return viewsChanged(action.source);
}

Jobs Session::setBedView(const SetBedView& action) {
  SourceState& source = sources_.at(action.source);
  source.bedView = viewOf(source, action.view).id;
  return viewsChanged(action.source);
}

Jobs Session::takeViews(const std::optional<std::size_t>& which) {
  if (!target_) {
    failJob("choose the target first");
  }
  for (const std::size_t i : meant(which)) {
    const SourceState& source = sources_.at(i);
    const std::string where = sources_.size() > 1 ? source.name + ": " : "";
    if (!source.found()) {
      failJob(where + (source.search && !source.search->seen.empty()
                           ? "the target is not found; " + source.search->seen
                           : "the target is not found in the picture"));
    }
    if (!source.ready()) {
      failJob(where + "the picture moves; hold the target still for a moment");
    }
    if (source.views.size() >= kMostViews) {
      failJob(where + "there are enough views; delete one first");
    }
  }
  Jobs jobs;
  for (const std::size_t i : meant(which)) {
    const Jobs more = take(sources_.at(i), i);
    jobs.insert(jobs.end(), more.begin(), more.end());
  }
  return jobs;
}

Jobs Session::take(SourceState& source, std::size_t index) {
  if (source.views.size() >= kMostViews) {
    return {};
  }
  source.views.push_back({.id = source.nextView++,
                          .frame = source.search->frame,
                          .points = source.search->points,
                          .picture = source.search->picture});
  if (source.bedView == 0) {
    source.bedView = source.views.back().id;
  }
  changed();
  return viewsChanged(index);
}

void Session::beginVerify(std::size_t index) {
  SourceState& source = sources_.at(index);
  if (!source.calibration.outcome) {
    failJob("calibrate first");
  }
  const double own = source.calibration.outcome->chosen.accuracy.insideTarget;
  source.verify = {.status = JobStatus::kRunning, .limit = tolerance_ > 0 ? tolerance_ : own};
}

Jobs Session::begin(Job::Kind kind, const std::optional<std::size_t>& which) {
  for (const std::size_t i : meant(which)) {
    const SourceState& source = sources_.at(i);
    if (kind == Job::Kind::kCalibrate && source.views.empty()) {
      failJob((sources_.size() > 1 ? source.name + ": " : "") + "take a view first");
    }
    if (source.calibration.status == JobStatus::kRunning) {
      failJob("the calibration is still running");
    }
    if (kind == Job::Kind::kVerify && !source.calibration.outcome) {
      failJob("calibrate first");
    }
  }
  Jobs jobs;
  for (const std::size_t i : meant(which)) {
    if (kind == Job::Kind::kCalibrate) {
      forgetSaved();
      SourceState& source = sources_.at(i);
      source.calibration = {.status = JobStatus::kRunning,
                            .step = "beginning",
                            .revision = source.revision,
                            .outcome = source.calibration.outcome};
    } else {
      beginVerify(i);
    }
    jobs.push_back({kind, i});
  }
  return jobs;
}

void Session::accept(const std::optional<std::size_t>& which) {
  for (const std::size_t i : meant(which)) {
    const CalibrationState& calibration = sources_.at(i).calibration;
    if (calibration.status != JobStatus::kDone) {
      failJob("calibrate first");
    }
    if (!calibration.outcome->trusted) {
      failJob("this calibration is not to be trusted; add a view and calibrate again");
    }
    if (isOutdated(i)) {
      failJob("views, target or bed have changed since; calibrate again");
    }
  }
  for (const std::size_t i : meant(which)) {
    sources_.at(i).calibration.accepted = true;
  }
}

Jobs Session::beginStitch() {
  if (sources_.size() != 2) {
    failJob("stitching needs two cameras");
  }
  for (const SourceState& source : sources_) {
    if (source.calibration.status != JobStatus::kDone) {
      failJob(source.name + ": calibrate first");
    }
  }
  stitch_ = {.status = JobStatus::kRunning, .message = "", .outcome = nullptr};
  return {{Job::Kind::kStitch, 0}};
}

Jobs Session::beginSave() {
  if (folder_.empty()) {
    failJob("the program was started without --output; download the files instead");
  }
  for (const SourceState& source : sources_) {
    if (!source.calibration.accepted) {
      failJob((sources_.size() > 1 ? source.name + ": " : "") + "accept the calibration first");
    }
  }
  return {{Job::Kind::kSave, 0}};
}

CalibrationWish Session::wishOf(std::size_t index,
                                const std::vector<CalibrationPoint>* with) const {
  const SourceState& source = at(index);
  CalibrationWish wish{.image = source.image,
                       .bed = bed_,
                       .tolerance = tolerance_,
                       .forStitching = sources_.size() > 1};
  for (const TakenView& view : source.views) {
    if (view.id == source.bedView) {
      wish.bedView = wish.views.size();
      wish.bedPicture = view.picture;
    }
    wish.views.push_back({viewName(view), view.points});
  }
  if (with != nullptr) {
    wish.views.push_back({"the new view", *with});
  }
  return wish;
}

}  // namespace fisheye_calibration::program
