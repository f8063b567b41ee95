// The page itself, conversions of points and downloads.
#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "base/failure.h"
#include "base/text.h"
#include "drawing/target_sheet.h"
#include "geometry/conversions.h"
#include "geometry/metric_picture.h"
#include "geometry/raw_ray.h"
#include "page/page_files.h"
#include "page/routes.h"
#include "page/saved_files.h"
#include "web/assets.h"

namespace fisheye_calibration::program {
namespace {

using nlohmann::json;

const char* typeOf(std::string_view name) {
  if (name.ends_with(".html")) {
    return "text/html; charset=utf-8";
  }
  if (name.ends_with(".css")) {
    return "text/css; charset=utf-8";
  }
  if (name.ends_with(".js")) {
    return "text/javascript; charset=utf-8";
  }
  return name.ends_with(".svg") ? "image/svg+xml" : "application/octet-stream";
}

void answerFile(const std::string& name, httplib::Response& response) {
  std::string_view bytes = pageFile(name);
  if (bytes.empty()) {
    bytes = webAsset(name);
  }
  if (bytes.empty()) {
    response.status = 404;
    return;
  }
  response.set_content(bytes.data(), bytes.size(), typeOf(name));
}

json pairOf(const std::optional<cv::Point2d>& point) {
  const bool known = point && std::isfinite(point->x) && std::isfinite(point->y);
  return known ? json({point->x, point->y}) : json(nullptr);
}

cv::Point2d askedPoint(const httplib::Request& request) {
  const auto x = queryNumber(request, "x", -1e7, 1e7);
  const auto y = queryNumber(request, "y", -1e7, 1e7);
  if (!x || !y) {
    failBadInput("x and y are missing");
  }
  return {*x, *y};
}

json convertedBy(const MetricPicture& view, const std::string& from, cv::Point2d point) {
  const cv::Point2d bed = from == "bed" ? point : view.bedAt(point);
  return {{"raw", nullptr}, {"view", pairOf(view.positionOf(bed))}, {"bed", pairOf(bed)}};
}

std::shared_ptr<const CalibrationOutcome> outcomeOf(Service& service, std::size_t source) {
  auto outcome = service.engine.outcome(source);
  if (!outcome) {
    failJob("calibrate first");
  }
  return outcome;
}

void answerConversion(Service& service, const httplib::Request& request,
                      httplib::Response& response) {
  const cv::Point2d point = askedPoint(request);
  const std::string from = request.get_param_value("from");
  const bool isStitched = request.get_param_value("source") == "stitched";
  if (!(from == "view" || from == "bed" || (from == "raw" && !isStitched))) {
    failBadInput("from is raw, view or bed");
  }
  if (isStitched) {
    const auto stitch = service.engine.stitch();
    if (!stitch) {
      failJob("stitch the cameras first");
    }
    answerJson(response, convertedBy(metricPicture(stitch->exact), from, point).dump());
    return;
  }
  const auto outcome = outcomeOf(service, querySource(request, service));
  const CalibrationResult& result = outcome->chosen.result;
  const MetricPicture view = metricPicture(result.param, result.corrected);
  std::optional<cv::Point2d> bed = point;
  if (from == "view") {
    bed = view.bedAt(point);
  } else if (from == "raw") {
    const SeenPoint seen = bedPointAt(result.param, point);
    bed = seen.sight == Sight::kBed ? std::optional(seen.bed) : std::nullopt;
  }
  json converted = {{"raw", from == "raw" ? pairOf(point) : json(nullptr)},
                    {"view", nullptr},
                    {"bed", pairOf(bed)}};
  if (bed) {
    converted["view"] = pairOf(view.positionOf(*bed));
    if (from != "raw") {
      converted["raw"] = pairOf(cv::Point2d(rawPosition(result.param, cv::Point2f(*bed))));
    }
  }
  answerJson(response, converted.dump());
}

void attach(httplib::Response& response, const std::string& name, const std::string& text,
            const char* type) {
  response.set_header("Content-Disposition", "attachment; filename=\"" + name + "\"");
  response.set_content(text, type);
}

void answerTarget(const httplib::Request& request, httplib::Response& response) {
  const auto number = [&](const char* name, std::optional<double> usual) {
    const auto value = queryNumber(request, name, -1e6, 1e6);
    if (!value && !usual) {
      failBadInput(std::string(name) + " is missing");
    }
    return value ? *value : *usual;
  };
  const ChosenTarget chosen =
      checkedTarget(request.get_param_value("kind"), number("columns", {}), number("rows", {}),
                    number("spacing", {}), number("originX", 0), number("originY", 0));
  const Sheet sheet = layOutTarget(chosen.target, chosen.world).sheet;
  constexpr double kLargestSide = 20000;  // mm
  if (std::max(sheet.size.width, sheet.size.height) > kLargestSide) {
    failBadInput("the sheet would be larger than 20 m");
  }
  attach(response, "target.svg", sheetAsSvg(sheet), "image/svg+xml");
}

// A download of something that a calibration has made.
httplib::Server::Handler ofOutcome(Service& service, const char* name, const char* type,
                                   std::string (*textOf)(const CalibrationOutcome&)) {
  return guarded([&service, name, type, textOf](const auto& request, auto& response) {
    const auto outcome = outcomeOf(service, querySource(request, service));
    attach(response, name, textOf(*outcome), type);
  });
}

httplib::Server::Handler ofStitch(Service& service, const char* name, const char* type,
                                  std::string (*textOf)(const StitchOutcome&)) {
  return guarded([&service, name, type, textOf](const auto&, auto& response) {
    const auto stitch = service.engine.stitch();
    if (!stitch) {
      failJob("stitch the cameras first");
    }
    attach(response, name, textOf(*stitch), type);
  });
}

}  // namespace

void addFileRoutes(httplib::Server& server, Service& service) {
  server.Get("/", [](const auto&, auto& response) { answerFile("index.html", response); });
  server.Get("/([a-z0-9][a-z0-9_-]{0,40}\\.(?:html|css|js|svg))",
             [](const auto& request, auto& response) { answerFile(request.matches[1], response); });
  server.Get("/api/convert", guarded([&service](const auto& request, auto& response) {
               answerConversion(service, request, response);
             }));
  server.Get("/download/target\\.svg",
             guarded([](const auto& request, auto& response) { answerTarget(request, response); }));
  server.Get("/download/camera\\.ini", ofOutcome(service, "camera.ini", "text/plain", cameraText));
  server.Get("/download/points\\.csv", ofOutcome(service, "points.csv", "text/csv", pointsText));
  server.Get("/download/report\\.html", guarded([&service](const auto& request, auto& response) {
               const std::size_t source = querySource(request, service);
               const auto outcome = outcomeOf(service, source);
               attach(response, "report.html",
                      reportPage(*outcome, cameraFileName(source, service.engine.sourceCount())),
                      "text/html; charset=utf-8");
             }));
  server.Get("/download/report\\.json",
             ofOutcome(service, "report.json", "application/json", reportText));
  server.Get("/download/dual\\.ini", ofStitch(service, "dual.ini", "text/plain", dualText));
  server.Get("/download/dual\\.html",
             ofStitch(service, "dual.html", "text/html; charset=utf-8", dualPage));
}

}  // namespace fisheye_calibration::program
