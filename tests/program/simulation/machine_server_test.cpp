// The simulated machine's streams, over real connections.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include <chrono>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/videoio.hpp>
#include <string>
#include <thread>
#include <vector>

#include "program/support/sample_video.h"
#include "simulation/machine_server.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;

const cv::Rect2d kBed(0, 0, 300, 200);

SceneItem sheetOf(int level) {
  return {.picture = PlacedPicture(cv::Mat(20, 30, CV_8U, cv::Scalar(level)), kBed)};
}

// Two cameras over a bed that is dark in one scene and bright in the other.
Machine smallMachine() {
  const NominalCamera camera = {.size = {.width = 320, .height = 240},
                                .fx = 200,
                                .fy = 200,
                                .centre = {160, 120},
                                .over = {150, 100},
                                .height = 200};
  return {.bed = kBed,
          .bedPicture = slattedBed(kBed),
          .cameras = {camera, camera},
          .scenes = {{"dark", {sheetOf(50)}, {.noise = 2}}, {"bright", {sheetOf(200)}, {}}}};
}

class MachineServerTest : public testing::Test {
 protected:
  void SetUp() override {
    port = server.bind("127.0.0.1", 0);
    ASSERT_NE(port, 0);
    running = std::thread([this] { server.run(); });
  }

  void TearDown() override {
    httplib::Client("127.0.0.1", port).Get("/scene");  // it has begun to run
    server.stop();
    running.join();
  }

  int post(const std::string& path) {
    const httplib::Result result = httplib::Client("127.0.0.1", port).Post(path);
    return result ? result->status : 0;
  }

  // The level in the middle of the picture in the frame.
  int levelOf(const std::string& path) {
    const httplib::Result result = httplib::Client("127.0.0.1", port).Get(path);
    if (!result || result->status != 200) {
      return -1;
    }
    const std::vector<unsigned char> bytes(result->body.begin(), result->body.end());
    const cv::Mat frame = cv::imdecode(bytes, cv::IMREAD_GRAYSCALE);
    return frame.size() == cv::Size(320, 240) ? frame.at<unsigned char>(120, 160) : -2;
  }

  SimulatedMachine machine = SimulatedMachine(smallMachine(), 1);
  MachineServer server = MachineServer(machine, 30);
  std::thread running;
  int port = 0;
};

TEST_F(MachineServerTest, TheSceneChangesWhatTheCamerasSee) {
  EXPECT_NEAR(levelOf("/1.jpg"), 50, 12);
  EXPECT_EQ(post("/scene/bright"), 200);
  EXPECT_NEAR(levelOf("/1.jpg"), 200, 4);
  EXPECT_NEAR(levelOf("/2.jpg"), 200, 4);
  const httplib::Result state = httplib::Client("127.0.0.1", port).Get("/scene");
  ASSERT_TRUE(state);
  EXPECT_EQ(state->body, "{\"on\":true,\"scene\":\"bright\",\"scenes\":[\"dark\",\"bright\"]}\n");
  EXPECT_EQ(post("/scene/other"), 404);
  EXPECT_EQ(levelOf("/3.jpg"), -1) << "there is no third camera";
}

TEST_F(MachineServerTest, UnpluggedStreamsEndAndAreRefusedUntilTheyAreBack) {
  std::size_t received = 0;
  bool ended = false;
  std::thread reader([&] {
    httplib::Client client("127.0.0.1", port);
    client.set_read_timeout(std::chrono::seconds(10));
    client.Get("/1.mjpg", [&](const char*, std::size_t length) {
      received += length;
      return true;
    });
    ended = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  EXPECT_EQ(post("/off"), 200);
  reader.join();
  EXPECT_TRUE(ended);
  EXPECT_GT(received, 1000u);
  const httplib::Result refused = httplib::Client("127.0.0.1", port).Get("/1.mjpg");
  ASSERT_TRUE(refused);
  EXPECT_EQ(refused->status, 503);
  EXPECT_EQ(post("/on"), 200);
  EXPECT_NEAR(levelOf("/1.jpg"), 50, 12);
}

TEST_F(MachineServerTest, PagesFromElsewhereAreNotAnswered) {
  const auto statusWith = [&](const std::string& origin) {
    const httplib::Result result =
        httplib::Client("127.0.0.1", port).Post("/off", {{"Origin", origin}}, "", "text/plain");
    return result ? result->status : 0;
  };
  EXPECT_EQ(statusWith("http://example.org"), 403);
  EXPECT_EQ(statusWith("http://localhost.example.org"), 403);
  EXPECT_EQ(statusWith("null"), 403);
  EXPECT_NEAR(levelOf("/1.jpg"), 50, 12);
  EXPECT_EQ(statusWith("http://127.0.0.1:8000"), 200);
  EXPECT_EQ(levelOf("/1.jpg"), -1) << "unplugged";
}

TEST_F(MachineServerTest, ManyReadersDoNotKeepTheControlsOut) {
  constexpr int kReaders = 40;
  std::atomic<int> reading = 0;
  std::vector<std::thread> readers;
  for (int i = 0; i < kReaders; ++i) {
    readers.emplace_back([&] {
      bool first = true;
      httplib::Client client("127.0.0.1", port);
      client.set_read_timeout(std::chrono::seconds(60));
      client.Get("/1.mjpg", [&](const char*, std::size_t) {
        reading += first ? 1 : 0;
        first = false;
        return true;
      });
    });
  }
  while (reading < kReaders) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_EQ(post("/off"), 200);
  for (std::thread& reader : readers) {
    reader.join();
  }
}

TEST_F(MachineServerTest, ItsStreamsOpenAsVideo) {
  if (!hasFfmpeg()) {
    GTEST_SKIP() << "the image library has no FFmpeg here";
  }
  cv::VideoCapture video("http://127.0.0.1:" + std::to_string(port) + "/2.mjpg", cv::CAP_FFMPEG);
  ASSERT_TRUE(video.isOpened());
  cv::Mat frame;
  for (int i = 0; i < 5; ++i) {
    ASSERT_TRUE(video.read(frame));
    EXPECT_EQ(frame.size(), cv::Size(320, 240));
  }
  EXPECT_NEAR(frame.at<cv::Vec3b>(120, 160)[1], 50, 12);
}

}  // namespace
}  // namespace fisheye_calibration::program
