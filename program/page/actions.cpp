#include "page/actions.h"

#include <array>
#include <cmath>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "base/failure.h"
#include "detection/charuco_board.h"
#include "detection/markers.h"

namespace fisheye_calibration::program {
namespace {

using nlohmann::json;

constexpr double kFarthest = 1e6;      // mm, of places on the bed
constexpr int kLargestGridSide = 200;  // points
constexpr int kDeepest = 4;            // levels of a body

constexpr std::array<std::pair<const char*, TargetKind>, 4> kKinds = {
    {{"charuco", TargetKind::kCharuco},
     {"chessboard", TargetKind::kChessboard},
     {"circles", TargetKind::kCircles},
     {"asymmetricCircles", TargetKind::kAsymmetricCircles}}};

class Fields {
 public:
  Fields(const json& body, std::size_t sources) : body_(body), sources_(sources) {}

  bool has(const char* name) const { return body_.contains(name) && !body_[name].is_null(); }

  double number(const char* name, double least, double most) const {
    if (!has(name) || !body_[name].is_number()) {
      failBadInput(std::string(name) + " is missing or no number");
    }
    const double value = body_[name].get<double>();
    if (!(value >= least && value <= most)) {
      failBadInput(std::string(name) + " is too small or too large");
    }
    return value;
  }

  int whole(const char* name, int least, int most) const {
    const double value = number(name, least, most);
    if (value != std::floor(value)) {
      failBadInput(std::string(name) + " is not a whole number");
    }
    return static_cast<int>(value);
  }

  bool truth(const char* name) const {
    if (!has(name) || !body_[name].is_boolean()) {
      failBadInput(std::string(name) + " is missing or neither true nor false");
    }
    return body_[name].get<bool>();
  }

  std::string word(const char* name) const {
    if (!has(name) || !body_[name].is_string()) {
      failBadInput(std::string(name) + " is missing or no text");
    }
    return body_[name].get<std::string>();
  }

  std::size_t source() const {
    return static_cast<std::size_t>(whole("source", 0, static_cast<int>(sources_) - 1));
  }

  std::optional<std::size_t> anySource() const {
    return has("source") ? std::optional(source()) : std::nullopt;
  }

 private:
  const json& body_;
  std::size_t sources_;
};

Action targetAction(const Fields& fields) {
  const auto origin = [&](const char* name) {
    return fields.has(name) ? fields.number(name, -kFarthest, kFarthest) : 0;
  };
  return SetTarget{checkedTarget(
      fields.word("kind"), fields.number("columns", 0, 1e6), fields.number("rows", 0, 1e6),
      fields.number("spacing", 0, kFarthest), origin("originX"), origin("originY"))};
}

Action bedAction(const Fields& fields, const json& body) {
  if (body.contains("bed") && body["bed"].is_null()) {
    return SetBed{};
  }
  return SetBed{cv::Rect2d(
      fields.number("x", -kFarthest, kFarthest), fields.number("y", -kFarthest, kFarthest),
      fields.number("width", 1, kFarthest), fields.number("height", 1, kFarthest))};
}

int viewId(const Fields& fields) { return fields.whole("view", 1, 1000000); }

using Reader = std::function<Action(const Fields&, const json&)>;

const std::map<std::string, Reader>& readers() {
  using F = const Fields&;
  using J = const json&;
  static const std::map<std::string, Reader> kAll = {
      {"setStep", [](F f, J) -> Action { return SetStep{f.whole("step", 1, 5)}; }},
      {"setTarget", [](F f, J) -> Action { return targetAction(f); }},
      {"setBed", [](F f, J body) -> Action { return bedAction(f, body); }},
      {"setTolerance",
       [](F f, J) -> Action {
         return SetTolerance{f.has("tolerance") ? f.number("tolerance", 1e-4, kFarthest) : 0};
       }},
      {"setAutoTake", [](F f, J) -> Action { return SetAutoTake{f.truth("on")}; }},
      {"deleteView",
       [](F f, J) -> Action {
         return DeleteView{f.source(), viewId(f)};
       }},
      {"setBedView",
       [](F f, J) -> Action {
         return SetBedView{f.source(), viewId(f)};
       }},
      {"takeView", [](F f, J) -> Action { return TakeView{f.anySource()}; }},
      {"calibrate", [](F f, J) -> Action { return Calibrate{f.anySource()}; }},
      {"accept", [](F f, J) -> Action { return Accept{f.anySource()}; }},
      {"verify", [](F f, J) -> Action { return Verify{f.anySource()}; }},
      {"stitch", [](F, J) -> Action { return Stitch{}; }},
      {"save", [](F, J) -> Action { return Save{}; }},
      {"reset", [](F, J) -> Action { return Reset{}; }}};
  return kAll;
}

}  // namespace

Action parseAction(std::string_view request, std::size_t sources) {
  const auto shallow = [](int depth, json::parse_event_t, const json&) {
    if (depth > kDeepest) {
      failBadInput("the request is nested too deeply");
    }
    return true;
  };
  const json body = json::parse(request, shallow, false);
  if (body.is_discarded() || !body.is_object()) {
    failBadInput("the request is no JSON object");
  }
  const Fields fields(body, sources);
  const auto reader = readers().find(fields.word("action"));
  if (reader == readers().end()) {
    failBadInput("there is no such action");
  }
  return reader->second(fields, body);
}

ChosenTarget checkedTarget(std::string_view kind, double columns, double rows, double spacing,
                           double originX, double originY) {
  ChosenTarget chosen;
  bool known = false;
  for (const auto& [name, value] : kKinds) {
    if (kind == name) {
      chosen.target.kind = value;
      known = true;
    }
  }
  if (!known) {
    failBadInput("kind is charuco, chessboard, circles or asymmetricCircles");
  }
  const int fewest = chosen.target.kind == TargetKind::kChessboard ? 3 : 2;
  const auto isCount = [&](double count) {
    return count >= fewest && count <= kLargestGridSide && count == std::floor(count);
  };
  if (!isCount(columns) || !isCount(rows)) {
    std::string text = "columns and rows are whole numbers from ";
    text.append(std::to_string(fewest)).append(" to ").append(std::to_string(kLargestGridSide));
    failBadInput(text);
  }
  if (!(spacing > 0.01 && spacing <= 10000)) {
    failBadInput("the spacing is more than 0.01 mm and at most 10000 mm");
  }
  if (!(std::abs(originX) <= kFarthest && std::abs(originY) <= kFarthest)) {
    failBadInput("the origin is too far away");
  }
  chosen.target.columns = static_cast<int>(columns);
  chosen.target.rows = static_cast<int>(rows);
  chosen.world.spacing = static_cast<float>(spacing);
  chosen.world.origin = {static_cast<float>(originX), static_cast<float>(originY)};
  if (chosen.target.kind == TargetKind::kCharuco) {
    const Target& target = chosen.target;
    if (!markersAvailable()) {
      failBadInput("this program was built without markers; choose another target");
    }
    if (CharucoBoard(target.columns, target.rows, target.markerShare).markerCount() >
        kLargestMarkerCount) {
      failBadInput("there are not enough markers for so many squares");
    }
  }
  return chosen;
}

const char* kindName(TargetKind kind) {
  for (const auto& [name, value] : kKinds) {
    if (value == kind) {
      return name;
    }
  }
  return "";
}

}  // namespace fisheye_calibration::program
