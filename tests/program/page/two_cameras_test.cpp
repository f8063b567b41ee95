// Two cameras over one bed, from the target to the saved files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>

#include "page/engine.h"
#include "program/page/fake_machine.h"
#include "program/support/synthetic_target.h"
#include "program/support/synthetic_views.h"
#include "support/temporary_folder.h"

namespace fisheye_calibration::program {
namespace {

using nlohmann::json;

// 220 mm from the middle of the board, which it sees in the middle of its picture.
SyntheticCamera cameraTilted(double aboutX, double aboutY) {
  SyntheticCamera camera{.width = 640, .height = 480, .focalLength = 210};
  camera.principalPoint = {322, 238};
  camera.R = tilted(aboutX, aboutY);
  for (std::size_t i = 0; i < 3; ++i) {
    camera.T[i] = -120 * camera.R[3 * i] - 90 * camera.R[3 * i + 1] + (i == 2 ? 220 : 0);
  }
  return camera;
}

class TwoCameras : public testing::Test {
 protected:
  TwoCameras() {
    cameras["left"] = std::make_shared<FakeCamera>();
    cameras["right"] = std::make_shared<FakeCamera>();
    cameras["left"]->picture = drawTarget(cameraTilted(0.25, -0.3), SyntheticTarget());
    cameras["right"]->picture = drawTarget(cameraTilted(0.25, 0.3), SyntheticTarget());
    engine = std::make_unique<Engine>(EngineSetup{
        .sources = {"left", "right"},
        .open = [this](const std::string& text) { return openerOf(cameras.at(text))(text); },
        .folder = folder.path(),
        .version = "1"});
  }

  json state() const { return json::parse(*engine->snapshot().text); }

  std::string refusalOf(const char* text) const {
    try {
      engine->apply(parseAction(text, 2));
    } catch (const Failure& failure) {
      return failure.what();
    }
    return "";
  }

  template <class Condition>
  bool becomes(const Condition& condition) const {
    return within(std::chrono::seconds(60), [&] { return condition(state()); });
  }

  support::TemporaryFolder folder;
  std::map<std::string, std::shared_ptr<FakeCamera>> cameras;
  std::unique_ptr<Engine> engine;
};

TEST_F(TwoCameras, AreCalibratedStitchedAndSaved) {
  ASSERT_EQ(
      refusalOf(
          R"({"action":"setTarget","kind":"chessboard","columns":9,"rows":7,"spacing":30,"originX":100,"originY":100})"),
      "");
  ASSERT_EQ(refusalOf(R"({"action":"setStep","step":2})"), "");
  EXPECT_EQ(refusalOf(R"({"action":"stitch"})"), "left: calibrate first");
  ASSERT_TRUE(within(std::chrono::seconds(60), [&] {
    return refusalOf(R"({"action":"takeView"})").empty();
  })) << refusalOf(R"({"action":"takeView"})");
  ASSERT_EQ(refusalOf(R"({"action":"calibrate"})"), "");
  ASSERT_TRUE(becomes([](const json& now) {
    return now["sources"][0]["calibration"]["status"] == "done" &&
           now["sources"][1]["calibration"]["status"] == "done";
  })) << state()["sources"][0]["calibration"]["message"]
      << state()["sources"][1]["calibration"]["message"];
  const json calibrated = state();
  for (const json& source : calibrated["sources"]) {
    EXPECT_EQ(source["calibration"]["view"]["width"], 1280);
    EXPECT_LT(source["calibration"]["insideTarget"].get<double>(), 1);
  }
  ASSERT_EQ(refusalOf(R"({"action":"stitch"})"), "");
  ASSERT_TRUE(becomes([](const json& now) { return now["stitch"]["status"] != "running"; }));
  const json stitch = state()["stitch"];
  ASSERT_EQ(stitch["status"], "done") << stitch["message"];
  EXPECT_EQ(stitch["trusted"], true) << stitch["warnings"];
  EXPECT_EQ(stitch["count"], 63);
  EXPECT_LT(stitch["rms"].get<double>(), 1);
  const cv::Mat frame = cameras["left"]->picture;
  const cv::Mat picture = stitchedPicture(*engine->stitch(), frame, cameras["right"]->picture);
  EXPECT_EQ(picture.cols, stitch["view"]["width"]);
  EXPECT_EQ(picture.rows, stitch["view"]["height"]);
  // The first point of the board, at (100, 100), as the page finds it.
  const json m = stitch["view"]["toBed"];
  const json first = stitch["points"][0];
  EXPECT_NEAR(first["x"].get<double>(), 100, 1);
  EXPECT_NEAR(first["y"].get<double>(), 100, 1);
  EXPECT_NE(m[0].get<double>() * m[4].get<double>(), 0);

  EXPECT_EQ(refusalOf(R"({"action":"save"})"), "left: accept the calibration first");
  ASSERT_EQ(refusalOf(R"({"action":"accept"})"), "");
  ASSERT_EQ(refusalOf(R"({"action":"save"})"), "");
  for (const char* name :
       {"camera1.ini", "camera2.ini", "points1.csv", "points2.csv", "dual.ini", "dual.html"}) {
    EXPECT_GT(support::bytesOf(folder.file(name)).size(), 100U) << name;
  }
  EXPECT_NE(support::bytesOf(folder.file("dual.html")).find("63 shared points"), std::string::npos);

  // Calibrated anew, the cameras are not joined any more.
  ASSERT_EQ(refusalOf(R"({"action":"calibrate"})"), "");
  ASSERT_TRUE(becomes([](const json& now) {
    return now["sources"][0]["calibration"]["status"] == "done" &&
           now["sources"][1]["calibration"]["status"] == "done";
  }));
  EXPECT_EQ(state()["saved"], nullptr);
  ASSERT_EQ(refusalOf(R"({"action":"accept"})"), "");
  ASSERT_EQ(refusalOf(R"({"action":"save"})"), "");
  EXPECT_THAT(state()["saved"]["text"].get<std::string>(),
              testing::EndsWith("; no dual.ini, because the two pictures are not joined; what is "
                                "there of both cameras is of an earlier calibration"));
}

}  // namespace
}  // namespace fisheye_calibration::program
