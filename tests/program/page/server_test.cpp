#include "page/server.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgcodecs.hpp>
#include <string>

#include "base/failure.h"
#include "files/camera_file.h"
#include "program/page/running_server.h"
#include "support/temporary_folder.h"

namespace fisheye_calibration::program {
namespace {

using nlohmann::json;

TEST(PageServer, ThePageComesWithItsPolicy) {
  const RunningServer running;
  const auto page = running.get("/");
  ASSERT_TRUE(page);
  EXPECT_EQ(page->status, 200);
  EXPECT_EQ(page->get_header_value("Content-Type"), "text/html; charset=utf-8");
  EXPECT_EQ(page->get_header_value("Content-Security-Policy"),
            "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; "
            "connect-src 'self'; frame-ancestors 'none'; base-uri 'none'; form-action 'none'");
  EXPECT_EQ(page->get_header_value("X-Content-Type-Options"), "nosniff");
  EXPECT_EQ(page->get_header_value("Referrer-Policy"), "no-referrer");
  EXPECT_EQ(running.get("/theme.css")->get_header_value("Content-Type"), "text/css; charset=utf-8");
}

TEST(PageServer, NothingButTheCompiledFilesIsServed) {
  const RunningServer running;
  for (const char* path : {"/nothing.html", "/../CMakeLists.txt", "/%2e%2e/main.cpp", "/etc/passwd",
                           "/assets/", "/page.js.map"}) {
    EXPECT_EQ(running.get(path)->status, 404) << path;
  }
}

TEST(PageServer, FramesAreNewerThanTheOneAskedFor) {
  const RunningServer running;
  const auto first = running.get("/frames/0/raw.jpg");
  ASSERT_EQ(first->status, 200);
  EXPECT_EQ(first->get_header_value("X-Width"), "960");
  EXPECT_EQ(first->get_header_value("X-Height"), "720");
  const std::vector<unsigned char> bytes(first->body.begin(), first->body.end());
  const cv::Mat picture = cv::imdecode(bytes, cv::IMREAD_COLOR);
  EXPECT_EQ(picture.size(), cv::Size(960, 720));
  const int number = std::stoi(first->get_header_value("X-Frame"));
  const auto second = running.get("/frames/0/raw.jpg?columns=320&after=" + std::to_string(number));
  ASSERT_EQ(second->status, 200);
  EXPECT_GT(std::stoi(second->get_header_value("X-Frame")), number);
  const std::vector<unsigned char> small(second->body.begin(), second->body.end());
  EXPECT_EQ(cv::imdecode(small, cv::IMREAD_COLOR).size(), cv::Size(320, 240));
}

TEST(PageServer, ASlowPageGetsTheNewestFrameOnly) {
  const RunningServer running;
  const auto first = running.get("/frames/0/raw.jpg");
  ASSERT_EQ(first->status, 200);
  std::this_thread::sleep_for(std::chrono::milliseconds(600));  // about 30 frames
  const auto second = running.get("/frames/0/raw.jpg?after=" + first->get_header_value("X-Frame"));
  ASSERT_EQ(second->status, 200);
  EXPECT_GT(std::stoi(second->get_header_value("X-Frame")),
            std::stoi(first->get_header_value("X-Frame")) + 5);
  EXPECT_LT(std::stod(second->get_header_value("X-Age")), 500);
}

TEST(PageServer, FramesOfAFastLargeSourceAreTheNewest) {
  const auto camera = std::make_shared<FakeCamera>();
  cv::Mat picture(1080, 1920, CV_8UC3);
  cv::randu(picture, 90, 110);  // as noisy as a camera's
  picture(cv::Rect(400, 300, 800, 500)) = cv::Scalar(220, 210, 200);
  camera->picture = picture;
  camera->periodMs = 10;
  const RunningServer running({}, 0, {"fake"}, camera);
  int last = 0;
  for (int i = 0; i < 30; ++i) {
    const int given = camera->given;
    const auto frame = running.get("/frames/0/raw.jpg?after=" + std::to_string(last));
    ASSERT_EQ(frame->status, 200);
    const int number = std::stoi(frame->get_header_value("X-Frame"));
    EXPECT_GT(number, last);
    EXPECT_GE(number, given - 1);  // the last one given may not have been taken yet
    last = number;
  }
}

TEST(PageServer, ASlowSourceAnswersThatNothingIsNew) {
  const RunningServer running;
  ASSERT_EQ(running.get("/frames/0/raw.jpg")->status, 200);
  running.camera->periodMs = 60000;
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  const auto last = running.get("/frames/0/raw.jpg");
  const auto none = running.get("/frames/0/raw.jpg?after=" + last->get_header_value("X-Frame"));
  EXPECT_EQ(none->status, 204);
}

TEST(PageServer, TwoPagesSeeTheSameStateAndAReloadKeepsIt) {
  const RunningServer running;
  EXPECT_EQ(running.act({{"action", "setStep"}, {"step", 3}}), 200);
  EXPECT_EQ(running.act({{"action", "setTolerance"}, {"tolerance", 0.5}}), 200);
  for (int page = 0; page < 2; ++page) {
    const json state = running.state();
    EXPECT_EQ(state["step"], 3);
    EXPECT_EQ(state["tolerance"], 0.5);
    EXPECT_EQ(state["version"], "1.2.3");
  }
}

// The whole events that a stream has sent until a text occurs in them.
std::string eventsUntil(const RunningServer& running, const std::string& wanted) {
  std::string events;
  const auto client = std::make_unique<httplib::Client>("127.0.0.1", running.port());
  client->set_read_timeout(10);
  client->Get("/api/events", [&](const char* data, std::size_t size) {
    events.append(data, size);
    return events.find(wanted) == std::string::npos && events.size() < 2000000;
  });
  return events;
}

TEST(PageServer, EventsBeginWithTheWholeStateAndGoOnWithChanges) {
  const RunningServer running;
  const std::string first = eventsUntil(running, "\n\n");
  EXPECT_EQ(first.substr(0, 17), "event: state\nid: ");
  const std::size_t data = first.find("data: ") + 6;
  EXPECT_EQ(json::parse(first.substr(data, first.find('\n', data) - data))["step"], 1);
  std::thread later([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    running.act({{"action", "setStep"}, {"step", 4}});
  });
  EXPECT_NE(eventsUntil(running, "\"step\":4").find("\"step\":4"), std::string::npos);
  later.join();
}

TEST(PageServer, FoundPointsAreSentAsEvents) {
  const RunningServer running;
  ASSERT_TRUE(running.findTarget());
  const std::string events = eventsUntil(running, "]]}\n\n");
  const std::size_t start = events.find("event: points\ndata: ");
  ASSERT_NE(start, std::string::npos);
  const std::size_t data = start + 20;
  const json found = json::parse(events.substr(data, events.find('\n', data) - data));
  EXPECT_EQ(found["width"], 960);
  ASSERT_EQ(found["points"].size(), 63U);
  const SyntheticCamera camera;
  for (const json& point : found["points"]) {
    const int index = point[0].get<int>() - 1;
    const cv::Point2d truth = camera.project(30.0 * (index % 9), 30.0 * (index / 9));
    EXPECT_NEAR(point[1].get<double>(), truth.x, 0.3) << index;
    EXPECT_NEAR(point[2].get<double>(), truth.y, 0.3) << index;
  }
}

TEST(PageServer, FromATargetToSavedFilesWithTheMillimetresThatThePageShows) {
  const support::TemporaryFolder folder;
  const RunningServer running(folder.path());
  EXPECT_EQ(running.act({{"action", "calibrate"}}), 409);
  ASSERT_TRUE(running.findTarget());
  ASSERT_TRUE(running.calibrate()) << running.source()["calibration"]["message"];
  EXPECT_EQ(running.act({{"action", "save"}}), 409);
  EXPECT_EQ(folder.entryCount(), 0);
  EXPECT_EQ(running.act({{"action", "accept"}}), 200);
  EXPECT_EQ(running.act({{"action", "save"}}), 200);
  EXPECT_EQ(running.state()["saved"]["files"],
            json::array({"camera.ini", "points.csv", "report.html"}));
  EXPECT_EQ(folder.entryCount(), 3);
  const auto report = running.get("/download/report.html?source=0");
  EXPECT_EQ(report->get_header_value("Content-Disposition"),
            "attachment; filename=\"report.html\"");
  EXPECT_NE(report->body.find("bed error"), std::string::npos);
  EXPECT_EQ(report->body, support::bytesOf(folder.file("report.html")));
  EXPECT_TRUE(loadCamera(folder.path() / "camera.ini").complaints.empty());
  EXPECT_EQ(support::bytesOf(folder.file("camera.ini")).substr(0, 1), "[");

  const SyntheticCamera camera;
  const double bound = running.source()["calibration"]["insideTarget"];
  EXPECT_GT(bound, 0);
  EXPECT_LT(bound, 1);
  for (const cv::Point2d bed : {cv::Point2d(15, 15), cv::Point2d(120, 90), cv::Point2d(225, 165)}) {
    const cv::Point2d raw = camera.project(bed.x, bed.y);
    const auto answer = running.get("/api/convert?source=0&from=raw&x=" + std::to_string(raw.x) +
                                    "&y=" + std::to_string(raw.y));
    const json converted = json::parse(answer->body);
    EXPECT_LT(std::hypot(converted["bed"][0].get<double>() - bed.x,
                         converted["bed"][1].get<double>() - bed.y),
              bound);
    // The page's own formula gives the same place.
    const json m = running.source()["calibration"]["view"]["toBed"];
    const double u = converted["view"][0];
    const double v = converted["view"][1];
    EXPECT_NEAR(m[0].get<double>() * u + m[1].get<double>() * v + m[2].get<double>(),
                converted["bed"][0].get<double>(), 0.01);
    EXPECT_NEAR(m[3].get<double>() * u + m[4].get<double>() * v + m[5].get<double>(),
                converted["bed"][1].get<double>(), 0.01);
  }
}

TEST(PageServer, ThePartOfTheCorrectedViewIsCutOutOnTheServer) {
  const RunningServer running;
  EXPECT_EQ(running.get("/frames/0/corrected.jpg")->status, 409);
  ASSERT_TRUE(running.findTarget());
  ASSERT_TRUE(running.calibrate());
  const auto part =
      running.get("/frames/0/corrected.jpg?left=100.5&top=50&width=200&height=100&columns=100");
  ASSERT_EQ(part->status, 200);
  EXPECT_EQ(part->get_header_value("X-Part"), "100,50,201,100");
  const std::vector<unsigned char> bytes(part->body.begin(), part->body.end());
  EXPECT_EQ(cv::imdecode(bytes, cv::IMREAD_COLOR).cols, 100);
  EXPECT_EQ(running.get("/frames/0/corrected.jpg?left=x&top=0&width=2&height=2")->status, 400);
}

TEST(PageServer, AMovedCameraIsNoticed) {
  const RunningServer running;
  ASSERT_TRUE(running.findTarget());
  ASSERT_TRUE(running.calibrate());
  const auto verified = [&] {
    running.act({{"action", "verify"}});
    running.becomes([](const json& source) { return source["verify"]["status"] != "running"; });
    return running.source()["verify"];
  };
  EXPECT_EQ(verified()["good"], true);
  SyntheticCamera moved;
  moved.T[0] += 3;
  running.camera->show(drawTarget(moved, SyntheticTarget()));
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  const json after = verified();
  EXPECT_EQ(after["status"], "done");
  EXPECT_EQ(after["good"], false);
  EXPECT_NEAR(after["shift"].get<double>(), 3, 1.5);
}

TEST(PageServer, ASourceThatGoesAndComesBackIsShownAndSurvived) {
  const RunningServer running;
  ASSERT_TRUE(running.findTarget());
  running.camera->present = false;
  EXPECT_TRUE(running.becomes([](const json& source) {
    return source["status"] == "lost" && source["message"].get<std::string>().starts_with("fake: ");
  }));
  EXPECT_EQ(running.source()["views"].size(), 1U);
  running.camera->present = true;
  EXPECT_TRUE(running.becomes([](const json& source) { return source["status"] == "live"; }));
  EXPECT_EQ(running.get("/frames/0/raw.jpg")->status, 200);
}

TEST(PageServer, TheTargetToPrintIsADownloadInMillimetres) {
  const RunningServer running;
  const auto sheet =
      running.get("/download/target.svg?kind=chessboard&columns=8&rows=6&spacing=39");
  EXPECT_EQ(sheet->get_header_value("Content-Disposition"), "attachment; filename=\"target.svg\"");
  EXPECT_EQ(sheet->get_header_value("Content-Type"), "image/svg+xml");
  EXPECT_NE(sheet->body.find("8 x 6 inner corners, spacing 39 mm"), std::string::npos);
  EXPECT_EQ(
      running.get("/download/target.svg?kind=chessboard&columns=8&rows=1e9&spacing=1")->status,
      400);
}

TEST(PageServer, APortIsTakenByOneServerAndFreeAgainAtOnce) {
  int port = 0;
  {
    const RunningServer running;
    port = running.port();
    running.get("/api/state");
    EXPECT_THROW(RunningServer({}, port), Failure);
  }
  const RunningServer again({}, port);
  EXPECT_EQ(again.get("/api/state")->status, 200);
}

}  // namespace
}  // namespace fisheye_calibration::program
