#include "page/calibration_state_json.h"

#include <cmath>

#include "base/text.h"
#include "geometry/point_spread.h"
#include "reports/picture_report.h"

namespace fisheye_calibration::program {

using Json = nlohmann::ordered_json;

namespace {

// Nothing for what is no number.
Json rounded(double value, int digits) {
  return std::isfinite(value) ? Json(parseNumber(general(value, digits)).value_or(0)) : Json();
}

Json mapJson(const BedAccuracy& accuracy) {
  Json map = rectangle(accuracy.grid.area);
  map["columns"] = accuracy.grid.columns;
  map["rows"] = accuracy.grid.rows;
  Json errors = Json::array();
  for (const double error : accuracy.errors) {
    errors.push_back(rounded(error, 4));
  }
  map["errors"] = std::move(errors);
  return map;
}

void addOutcome(Json& calibration, const CalibrationOutcome& outcome) {
  const BedAccuracy& accuracy = outcome.chosen.accuracy;
  const CalibrationResult& result = outcome.chosen.result;
  calibration["insideTarget"] = number(accuracy.insideTarget);
  calibration["onBed"] = number(accuracy.onBed);
  calibration["rms"] = number(result.rms);
  calibration["points"] = result.points.size();
  calibration["good"] = outcome.verdict.good && outcome.trusted;
  calibration["verdict"] = outcome.verdict.text;
  calibration["accuracy"] = describeAccuracy(accuracy);
  calibration["trusted"] = outcome.trusted;
  calibration["remedies"] = Json::array();
  for (const Remedy& remedy : outcome.remedies) {
    calibration["remedies"].push_back({{"advice", remedy.advice}, {"onBed", number(remedy.onBed)}});
  }
  calibration["warnings"] = outcome.warnings;
  calibration["map"] = mapJson(accuracy);
  calibration["target"] = Json::array();
  for (const cv::Point2d& place : bedPositions(result.points)) {
    calibration["target"].push_back(pairOf(place));
  }
  calibration["seen"] = nullptr;
  if (outcome.seen) {
    calibration["seen"] = {{"unseen", number(outcome.seen->unseen + outcome.seen->leftOut)},
                           {"blurred", number(outcome.seen->blurred)},
                           {"text", describeMissing(*outcome.seen)}};
  }
  calibration["view"] = viewJson(metricPicture(result.param, result.corrected));
}

}  // namespace

Json number(double value) { return rounded(value, 7); }

Json optionalText(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

Json rectangle(const cv::Rect2d& area) {
  return {{"x", number(area.x)},
          {"y", number(area.y)},
          {"width", number(area.width)},
          {"height", number(area.height)}};
}

Json pairOf(cv::Point2d point) { return {number(point.x), number(point.y)}; }

const char* wordOf(JobStatus status) {
  switch (status) {
    case JobStatus::kNone:
      return "none";
    case JobStatus::kRunning:
      return "running";
    case JobStatus::kDone:
      return "done";
    case JobStatus::kFailed:
      break;
  }
  return "failed";
}

Json viewJson(const MetricPicture& picture) {
  const cv::Point2d origin = picture.bedAt({0, 0});
  const double width = picture.size.width;
  const double height = picture.size.height;
  const cv::Point2d u = (picture.bedAt({width, 0}) - origin) / width;
  const cv::Point2d v = (picture.bedAt({0, height}) - origin) / height;
  return {{"width", picture.size.width},
          {"height", picture.size.height},
          {"pixel", number(picture.pixel)},
          {"toBed", {u.x, v.x, origin.x, u.y, v.y, origin.y}}};
}

Json calibrationJson(const CalibrationState& state, bool outdated) {
  Json calibration = {{"status", wordOf(state.status)},
                      {"progress", number(state.progress)},
                      {"step", state.step},
                      {"message", optionalText(state.message)},
                      {"outdated", state.status == JobStatus::kDone && outdated},
                      {"accepted", state.accepted}};
  for (const char* name : {"insideTarget", "onBed", "rms", "points", "good", "verdict", "accuracy",
                           "trusted", "remedies", "warnings", "map", "target", "seen", "view"}) {
    calibration[name] = nullptr;
  }
  if (state.status == JobStatus::kDone) {
    addOutcome(calibration, *state.outcome);
  }
  return calibration;
}

}  // namespace fisheye_calibration::program
