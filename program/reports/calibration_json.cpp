#include "reports/calibration_json.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <nlohmann/json.hpp>

#include "base/record_fields.h"

namespace fisheye_calibration::program {
namespace {

using Json = nlohmann::ordered_json;

Json number(double value) { return std::isfinite(value) ? Json(value) : Json(nullptr); }

Json sizeOf(const Size& size) { return {{"width", size.width}, {"height", size.height}}; }

Json recordOf(const FishEyeCalibrationParam& record) {
  Json json;
  for (const RecordField& field : recordFields()) {
    json[field.name] = number(field.value(record));
  }
  return json;
}

Json accuracyOf(const BedAccuracy& accuracy) {
  const BedGrid& grid = accuracy.grid;
  Json values = Json::array();
  for (const double error : accuracy.errors) {
    values.push_back(number(error));
  }
  return {{"insideTarget", number(accuracy.insideTarget)},
          {"aroundTarget", number(accuracy.aroundTarget)},
          {"onBed", number(accuracy.onBed)},
          {"grid",
           {{"x", number(grid.area.x)},
            {"y", number(grid.area.y)},
            {"width", number(grid.area.width)},
            {"height", number(grid.area.height)},
            {"columns", grid.columns},
            {"rows", grid.rows},
            {"errors", std::move(values)}}}};
}

// The bed that was asked for and how the camera sees it; null if none was.
Json bedOf(const CalibrationReport& report) {
  if (!report.seen) {
    return nullptr;
  }
  const cv::Rect2d& bed = *report.request.picture.bed;
  return {{"x", number(bed.x)},
          {"y", number(bed.y)},
          {"width", number(bed.width)},
          {"height", number(bed.height)},
          {"unseen", number(report.seen->unseen)},
          {"behind", number(report.seen->behind)},
          {"leftOut", number(report.seen->leftOut)},
          {"blurred", number(report.seen->blurred)}};
}

Json viewsOf(const CalibrationReport& report) {
  Json views = Json::array();
  const auto& wrongViews = report.robust.solved.wrongViews;
  for (std::size_t j = 0; j < report.request.views.size(); ++j) {
    const bool fits = std::find(wrongViews.begin(), wrongViews.end(), j) == wrongViews.end();
    views.push_back({{"name", report.request.views[j].name},
                     {"points", report.request.views[j].points.size()},
                     {"bed", j == report.request.bedView},
                     {"fits", fits},
                     {"wrongPointIds", wrongIds(report.robust.solved, report.request.views, j)}});
  }
  return views;
}

Json residualsOf(const std::vector<CalibrationPoint>& points) {
  Json residuals = Json::array();
  for (const CalibrationPoint& point : points) {
    residuals.push_back({{"id", point.PointId},
                         {"dx", number(point.ReprojErrX)},
                         {"dy", number(point.ReprojErrY)}});
  }
  return residuals;
}

Json remediesOf(const std::vector<Remedy>& remedies) {
  Json all = Json::array();
  for (const Remedy& remedy : remedies) {
    all.push_back({{"advice", remedy.advice}, {"onBed", number(remedy.onBed)}});
  }
  return all;
}

}  // namespace

std::string formatJson(const CalibrationReport& report) {
  const Json json = {{"image", sizeOf(report.request.image)},
                     {"corrected", sizeOf(report.chosen.result.corrected)},
                     {"bed", bedOf(report)},
                     {"solver", report.chosen.fromLibrary ? "library" : "robust"},
                     {"reason", report.chosen.reason},
                     {"camera", recordOf(report.chosen.result.param)},
                     {"rms", number(report.chosen.result.rms)},
                     {"noise", number(report.robust.solved.noiseSigma)},
                     {"leavesOutWrong", !report.request.keepAll},
                     {"views", viewsOf(report)},
                     {"residuals", residualsOf(report.chosen.result.points)},
                     {"bedError", accuracyOf(report.chosen.accuracy)},
                     {"tolerance", report.tolerance > 0 ? Json(report.tolerance) : Json(nullptr)},
                     {"remedies", remediesOf(report.remedies)},
                     {"warnings", report.warnings},
                     {"good", report.verdict.good},
                     {"verdict", report.verdict.text}};
  // Names of files may hold bytes that are not UTF-8.
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace fisheye_calibration::program
