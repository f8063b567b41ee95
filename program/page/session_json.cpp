#include "page/session_json.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <opencv2/imgproc.hpp>

#include "base/text.h"
#include "detection/markers.h"
#include "geometry/metric_picture.h"
#include "geometry/point_spread.h"
#include "page/calibration_state_json.h"

namespace fisheye_calibration::program {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kCoverageColumns = 12;
constexpr int kCoverageRows = 8;

Json optionalNumber(const std::optional<double>& value) {
  return value ? number(*value) : Json(nullptr);
}

const char* wordOf(SourceStatus status) {
  switch (status) {
    case SourceStatus::kOpening:
      return "opening";
    case SourceStatus::kLive:
      return "live";
    case SourceStatus::kLost:
      break;
  }
  return "lost";
}

Json targetJson(const std::optional<ChosenTarget>& chosen) {
  if (!chosen) {
    return nullptr;
  }
  const Target& target = chosen->target;
  return {{"kind", kindName(target.kind)},
          {"columns", target.columns},
          {"rows", target.rows},
          {"spacing", number(static_cast<double>(chosen->world.spacing))},
          {"originX", number(static_cast<double>(chosen->world.origin.first))},
          {"originY", number(static_cast<double>(chosen->world.origin.second))},
          {"text", describeTarget(target)},
          {"expected", target.columns * target.rows}};
}

Json verifyJson(const VerifyState& state) {
  if (state.status == JobStatus::kNone) {
    return nullptr;
  }
  Json verify = {{"status", wordOf(state.status)}};
  if (state.status == JobStatus::kFailed) {
    verify["message"] = state.message;
  }
  if (state.status == JobStatus::kDone) {
    const BedMotion& motion = state.motion;
    const bool good = motion.largest <= state.limit;
    verify["largest"] = number(motion.largest);
    verify["shift"] = number(motion.shift);
    verify["turn"] = number(motion.turnDegrees);
    verify["limit"] = number(state.limit);
    verify["good"] = good;
    verify["text"] = "off by at most " + roundedToTwo(motion.largest) + " mm: moved by " +
                     roundedToTwo(motion.shift) + " mm, turned by " +
                     roundedToTwo(motion.turnDegrees) + "\u00b0; " +
                     (good ? "still within " + roundedToTwo(state.limit) + " mm" : "re-calibrate");
  }
  return verify;
}

Json coverageJson(const SourceState& source) {
  std::vector<int> counts(static_cast<std::size_t>(kCoverageColumns) * kCoverageRows);
  for (const TakenView& view : source.views) {
    for (const CalibrationPoint& point : view.points) {
      const double x = static_cast<double>(point.ImagePtX) / source.image.width;
      const double y = static_cast<double>(point.ImagePtY) / source.image.height;
      const int column =
          std::clamp(static_cast<int>(x * kCoverageColumns), 0, kCoverageColumns - 1);
      const int row = std::clamp(static_cast<int>(y * kCoverageRows), 0, kCoverageRows - 1);
      ++counts[static_cast<std::size_t>(row) * kCoverageColumns + static_cast<std::size_t>(column)];
    }
  }
  return {{"columns", kCoverageColumns}, {"rows", kCoverageRows}, {"counts", counts}};
}

double coveredShare(const SourceState& source) {
  std::vector<CalibrationPoint> all;
  for (const TakenView& view : source.views) {
    all.insert(all.end(), view.points.begin(), view.points.end());
  }
  return all.size() < 3 ? 0 : coverage(all, source.image);
}

Json detectionJson(const SourceState& source, const std::optional<ChosenTarget>& target) {
  const bool searched = target && source.search;
  const char* status = !target          ? "off"
                       : !searched      ? "searching"
                       : source.found() ? "found"
                                        : "none";
  return {{"status", status},
          {"ready", searched && source.ready()},
          {"points", searched ? source.search->points.size() : 0},
          {"expected", target ? target->target.columns * target->target.rows : 0},
          {"seen", searched ? source.search->seen : ""},
          {"rate", optionalNumber(source.searchRate)},
          {"frame", searched ? Json(source.search->frame) : Json(nullptr)}};
}

Json gainJson(const std::optional<Gain>& gain) {
  if (!gain) {
    return nullptr;
  }
  const auto mm = [](double error) {
    return std::isfinite(error) ? roundedToTwo(error) + " mm" : std::string("unknown");
  };
  const std::string text =
      !gain->before ? "this first view gives an expected bed error of " + mm(gain->after)
      : gain->useful
          ? "the expected bed error falls from " + mm(*gain->before) + " to " + mm(gain->after)
          : "this view adds little: the expected bed error would go from " + mm(*gain->before) +
                " to " + mm(gain->after) + "; tilt or move the target";
  return {{"before", optionalNumber(gain->before)},
          {"after", number(gain->after)},
          {"useful", gain->useful},
          {"text", text}};
}

Json viewsJson(const SourceState& source) {
  Json views = Json::array();
  for (const TakenView& view : source.views) {
    views.push_back({{"id", view.id},
                     {"points", view.points.size()},
                     {"onBed", view.id == source.bedView},
                     {"frame", view.frame}});
  }
  return views;
}

Json sourceJson(const Session& session, std::size_t index) {
  const SourceState& source = session.at(index);
  const bool known = source.image != Size();
  Json result = {{"name", source.name},
                 {"status", wordOf(source.status)},
                 {"message", optionalText(source.message)},
                 {"width", known ? Json(source.image.width) : Json(nullptr)},
                 {"height", known ? Json(source.image.height) : Json(nullptr)},
                 {"rate", optionalNumber(source.rate)},
                 {"ageMs", optionalNumber(source.age)},
                 {"exposure", nullptr},
                 {"focus", nullptr},
                 {"steady", source.still}};
  if (source.exposure) {
    result["exposure"] = {{"word", source.exposure->word},
                          {"mean", number(source.exposure->mean)},
                          {"dark", number(source.exposure->dark)},
                          {"bright", number(source.exposure->bright)}};
  }
  if (source.focus) {
    const double blur = source.focus->blur;
    result["focus"] = {{"word", source.focus->word}, {"blur", blur > 0 ? number(blur) : nullptr}};
  }
  result["detection"] = detectionJson(source, session.target());
  result["coverage"] = coverageJson(source);
  result["covered"] = number(coveredShare(source));
  result["gain"] = gainJson(source.gain);
  result["views"] = viewsJson(source);
  result["expectedError"] = source.expectation ? number(source.expectation->onBed) : Json(nullptr);
  result["expectedProblem"] = optionalText(source.noExpectation);
  result["calibration"] = calibrationJson(source.calibration, session.isOutdated(index));
  result["verify"] = verifyJson(source.verify);
  return result;
}

Json stitchJson(const Session& session) {
  if (session.sourceCount() < 2) {
    return nullptr;
  }
  const StitchState& state = session.stitch();
  Json stitch = {{"status", wordOf(state.status)}, {"message", optionalText(state.message)}};
  if (state.status != JobStatus::kDone) {
    return stitch;
  }
  const StitchOutcome& outcome = *state.outcome;
  stitch["rms"] = number(outcome.rms);
  stitch["worst"] = number(outcome.worst);
  stitch["count"] = outcome.points.size();
  stitch["text"] = "the cameras agree to " + roundedToTwo(outcome.rms) +
                   " mm (root mean square) at " + std::to_string(outcome.points.size()) +
                   " shared points, to " + roundedToTwo(outcome.worst) + " mm at the worst";
  stitch["points"] = Json::array();
  for (const StitchedPoint& point : outcome.points) {
    stitch["points"].push_back({{"id", point.id},
                                {"x", number(point.bed.x)},
                                {"y", number(point.bed.y)},
                                {"dx", number(point.apart.x)},
                                {"dy", number(point.apart.y)},
                                {"apart", number(cv::norm(point.apart))}});
  }
  stitch["warnings"] = outcome.warnings;
  stitch["trusted"] = outcome.trusted;
  stitch["view"] = viewJson(metricPicture(outcome.exact));
  return stitch;
}

}  // namespace

std::string snapshotOf(const Session& session, const Instance& instance) {
  Json state = {
      {"instance", instance.id},
      {"number", session.number()},
      {"version", instance.version},
      {"folder", optionalText(session.folder())},
      {"step", session.step()},
      {"markersAvailable", markersAvailable()},
      {"target", targetJson(session.target())},
      {"bed", session.bed() ? rectangle(*session.bed()) : Json(nullptr)},
      {"tolerance", session.tolerance() > 0 ? number(session.tolerance()) : Json(nullptr)},
      {"autoTake", session.autoTake()}};
  state["sources"] = Json::array();
  for (std::size_t i = 0; i < session.sourceCount(); ++i) {
    state["sources"].push_back(sourceJson(session, i));
  }
  state["stitch"] = stitchJson(session);
  state["saved"] = nullptr;
  if (const SavedState& saved = session.saved(); !saved.files.empty()) {
    state["saved"] = {{"files", saved.files},
                      {"count", saved.count},
                      {"text", joined(saved.files, ", ") + " written to " + session.folder() +
                                   (saved.note.empty() ? "" : "; " + saved.note)}};
  }
  // Names of sources may hold bytes that are no UTF-8.
  return state.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string pointsEvent(std::size_t source, const SearchResult& result) {
  Json points = Json::array();
  for (const CalibrationPoint& point : result.points) {
    points.push_back({point.PointId, number(static_cast<double>(point.ImagePtX)),
                      number(static_cast<double>(point.ImagePtY))});
  }
  return Json({{"source", source},
               {"frame", result.frame},
               {"width", result.image.width},
               {"height", result.image.height},
               {"points", std::move(points)}})
      .dump();
}

}  // namespace fisheye_calibration::program
