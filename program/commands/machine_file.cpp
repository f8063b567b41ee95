#include "commands/machine_file.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "commands/drawn_items.h"
#include "commands/json_fields.h"
#include "files/picture_file.h"
#include "files/read_file.h"

namespace fisheye_calibration::program {
namespace {

using Json = nlohmann::ordered_json;

cv::Rect2d areaOf(const JsonFields& fields, const char* key) {
  const std::vector<double> sides = fields.numbers(key, 4);
  if (!(sides[2] > 0 && sides[3] > 0)) {
    failBadInput(fields.placeOf(key) + ": give a corner and a size as [X, Y, WIDTH, HEIGHT]");
  }
  return {sides[0], sides[1], sides[2], sides[3]};
}

cv::Vec3d vectorOf(const JsonFields& fields, const char* key) {
  if (!fields.has(key)) {
    return {};
  }
  const std::vector<double> values = fields.numbers(key, 3);
  return {values[0], values[1], values[2]};
}

cv::Point2d pointOf(const JsonFields& fields, const char* key) {
  const std::vector<double> values = fields.numbers(key, 2);
  return {values[0], values[1]};
}

NominalCamera cameraOf(const JsonFields& fields) {
  fields.allowOnly({"size", "focal", "centre", "k", "over", "height", "tilt"});
  const cv::Point2d size = pointOf(fields, "size");
  if (!(size.x >= 16 && size.y >= 16 && size.x <= 8192 && size.y <= 8192)) {
    failBadInput(fields.placeOf("size") + ": give two numbers from 16 to 8192");
  }
  const cv::Point2d focal = pointOf(fields, "focal");
  if (!(focal.x > 0 && focal.y > 0)) {
    failBadInput(fields.placeOf("focal") + ": give two numbers greater than 0");
  }
  const cv::Point2d k = pointOf(fields, "k");
  return {.size = {.width = static_cast<int>(size.x), .height = static_cast<int>(size.y)},
          .fx = focal.x,
          .fy = focal.y,
          .centre = pointOf(fields, "centre"),
          .k0 = k.x,
          .k1 = k.y,
          .over = pointOf(fields, "over"),
          .height = fields.positive("height"),
          .tilt = vectorOf(fields, "tilt")};
}

CameraVariation variationOf(const JsonFields& fields) {
  fields.allowOnly({"focal", "centre", "k", "place", "tilt"});
  return {.focalLength = fields.share("focal", 0),
          .centre = fields.notNegative("centre", 0),
          .k = fields.notNegative("k", 0),
          .place = fields.notNegative("place", 0),
          .tilt = fields.notNegative("tilt", 0)};
}

FrameEffects effectsOf(const JsonFields& fields) {
  fields.allowOnly({"light", "vignetting", "gradient", "blur", "noise"});
  constexpr double kMost = 100;
  FrameEffects effects = {.light = fields.numberOr("light", 1),
                          .vignetting = fields.share("vignetting", 0),
                          .gradient = fields.share("gradient", 0),
                          .blur = fields.numberOr("blur", 0),
                          .noise = fields.numberOr("noise", 0)};
  for (const auto& [key, value] :
       {std::pair("light", effects.light), {"blur", effects.blur}, {"noise", effects.noise}}) {
    if (!(value >= 0 && value <= kMost)) {
      failBadInput(fields.placeOf(key) + ": give a number from 0 to 100");
    }
  }
  return effects;
}

TargetOptions targetOf(const JsonFields& fields) {
  fields.allowOnly({"charuco", "chessboard", "circles", "asymmetric", "spacing", "marker",
                    "marker-bits", "origin", "first-id"});
  TargetOptions options;
  for (const auto& [key, option] : {std::pair("charuco", &options.charuco),
                                    {"chessboard", &options.chessboard},
                                    {"circles", &options.circles}}) {
    if (fields.has(key)) {
      *option = fields.text(key);
    }
  }
  options.asymmetric = fields.json().value("asymmetric", Json(false)) == Json(true);
  options.spacing = shortest(fields.positive("spacing"));
  if (fields.has("marker")) {
    options.marker = shortest(fields.positive("marker"));
  }
  if (fields.has("marker-bits")) {
    options.markerBits = std::to_string(fields.whole("marker-bits", 4, 7));
  }
  if (fields.has("origin")) {
    const cv::Point2d origin = pointOf(fields, "origin");
    options.origin = shortest(origin.x) + "," + shortest(origin.y);
  }
  if (fields.has("first-id")) {
    options.firstId = std::to_string(fields.whole("first-id", 1, 1000000));
  }
  return options;
}

// Descriptions, pictures and drawings of a machine while they are read.
class MachineReader {
 public:
  MachineReader(const std::filesystem::path& path, std::ostream& messages)
      : folder_(path.parent_path()), messages_(messages) {}

  Machine machine(const JsonFields& root) {
    root.allowOnly({"bed", "bed-picture", "background", "cameras", "variation", "scenes"});
    bed_ = areaOf(root, "bed");
    if (!(bed_.width >= 1 && bed_.height >= 1)) {
      failBadInput(root.placeOf("bed") + ": give sides of at least 1 mm");
    }
    const CameraVariation variation =
        root.has("variation") ? variationOf(root.fields("variation")) : CameraVariation();
    std::vector<NominalCamera> cameras;
    for (const JsonFields& camera : root.list("cameras")) {
      cameras.push_back(cameraOf(camera));
      lowest_ = std::min(lowest_, cameras.back().height - variation.place);
    }
    if (!(lowest_ > 0)) {
      failBadInput(root.placeOf("variation.place") + ": a camera could be below the bed");
    }
    return {.bed = bed_,
            .bedPicture = root.has("bed-picture")
                              ? PlacedPicture(pictureAt(root, "bed-picture"), bed_)
                              : slattedBed(bed_),
            .background = root.has("background") ? root.whole("background", 0, 255) : 40,
            .cameras = std::move(cameras),
            .variation = variation,
            .scenes = scenesOf(root.fields("scenes"))};
  }

 private:
  cv::Mat pictureAt(const JsonFields& fields, const char* key) {
    return readFrame(folder_ / pathOf(fields.text(key)), messages_);
  }

  std::vector<Scene> scenesOf(const JsonFields& fields) {
    std::vector<Scene> scenes;
    for (const auto& [name, description] : fields.json().items()) {
      const bool plain = !name.empty() && name.size() <= 60 &&
                         std::all_of(name.begin(), name.end(), [](unsigned char c) {
                           return std::isalnum(c) != 0 || c == '-' || c == '_';
                         });
      if (!plain) {
        failBadInput(fields.placeOf(shortened(name)) +
                     ": a scene's name is made of letters, digits, - and _");
      }
      for (const Scene& other : scenes) {
        if (equalIgnoringCase(name, other.name)) {
          failBadInput(fields.placeOf(name) + ": there is a scene " + inQuotes(other.name) +
                       ", whose files would have the same names on Windows");
        }
      }
      scenes.push_back(sceneOf(name, JsonFields(complete(fields, name, 0), fields.placeOf(name))));
    }
    if (scenes.empty()) {
      failBadInput(fields.placeOf("") + " give at least one scene");
    }
    return scenes;
  }

  // The description of a scene with what it takes over from the one that it is like.
  Json complete(const JsonFields& scenes, const std::string& name, int depth) {
    const JsonFields scene = scenes.fields(name.c_str());
    if (!scene.has("like")) {
      return scene.json();
    }
    constexpr int kDeepest = 8;
    if (depth >= kDeepest) {
      failBadInput(scene.placeOf("like") + ": scenes are like each other in a circle");
    }
    Json result = complete(scenes, scene.text("like"), depth + 1);
    result.merge_patch(scene.json());
    result.erase("like");
    return result;
  }

  Scene sceneOf(const std::string& name, const JsonFields& fields) {
    fields.allowOnly({"target", "picture", "marks", "tilt", "move", "height", "effects"});
    Scene scene = {.name = name};
    if (fields.has("effects")) {
      scene.effects = effectsOf(fields.fields("effects"));
    }
    if (fields.has("target")) {
      scene.items.push_back(target(fields));
    }
    if (fields.has("marks")) {
      const JsonFields marks = fields.fields("marks");
      marks.allowOnly({"spacing"});
      scene.items.push_back(
          drawnAt(fields, "marks", [&] { return drawnMarks(bed_, marks.positive("spacing")); }));
    }
    if (fields.has("picture")) {
      const JsonFields picture = fields.fields("picture");
      picture.allowOnly({"file", "area"});
      const cv::Rect2d area = areaOf(picture, "area");
      scene.items.push_back({.picture = PlacedPicture(pictureAt(picture, "file"), area)});
    }
    const double height = fields.numberOr("height", 0);
    if (!(height < lowest_)) {
      failBadInput(fields.placeOf("height") + ": give less than " + general(lowest_, 6) +
                   ", where a camera may be");
    }
    for (SceneItem& item : scene.items) {
      const cv::Rect2d& area = item.picture.area();
      item.pose = {.centre = 0.5 * (area.tl() + area.br()),
                   .tilt = vectorOf(fields, "tilt"),
                   .move = fields.has("move") ? pointOf(fields, "move") : cv::Point2d(),
                   .height = height};
    }
    return scene;
  }

  // Scenes with the same target share its drawing.
  SceneItem target(const JsonFields& scene) {
    const JsonFields fields = scene.fields("target");
    const std::string key = fields.json().dump();
    const auto known = targets_.find(key);
    if (known != targets_.end()) {
      return known->second;
    }
    const TargetOptions options = targetOf(fields);
    SceneItem drawn = drawnAt(scene, "target", [&] { return drawnTarget(options); });
    return targets_.emplace(key, std::move(drawn)).first->second;
  }

  // Failures of drawing do not know the file.
  template <class Draw>
  static SceneItem drawnAt(const JsonFields& scene, const char* place, const Draw& draw) {
    try {
      return draw();
    } catch (const Failure& failure) {
      failBadInput(scene.placeOf(place) + ": " + failure.what());
    }
  }

  std::filesystem::path folder_;
  std::ostream& messages_;
  cv::Rect2d bed_;
  double lowest_ = std::numeric_limits<double>::infinity();  // that a camera can be above the bed
  std::map<std::string, SceneItem> targets_;
};

}  // namespace

Machine readMachine(const std::filesystem::path& path, std::ostream& messages) {
  constexpr int kDeepest = 16;  // copies of the description are made level by level
  const auto shallow = [&](int depth, Json::parse_event_t, const Json&) {
    if (depth > kDeepest) {
      failBadInput(nameOf(path) + ": this is nested too deeply");
    }
    return true;
  };
  const Json json = Json::parse(readFile(path), shallow, false);
  if (json.is_discarded()) {
    failBadInput(nameOf(path) + ": this is not JSON");
  }
  try {
    return MachineReader(path, messages).machine(JsonFields(json, nameOf(path) + ":"));
  } catch (const Json::exception&) {
    failBadInput(nameOf(path) + ": this does not describe a machine");
  }
}

}  // namespace fisheye_calibration::program
