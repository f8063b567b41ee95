// What connections may cost a server, over real ones.
#include "http/limited_server.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "http/connection_threads.h"
#include "program/page/raw_connection.h"

namespace fisheye_calibration::program {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kLong = 24 << 20;  // more than the system keeps for a reader
constexpr std::size_t kSlowest = 6 << 20;
const char* const kRequest = "GET /short HTTP/1.1\r\nHost: a\r\n\r\n";

class LimitedServerTest : public testing::Test {
 protected:
  LimitedServerTest() {
    server.new_task_queue = [] { return new ConnectionThreads(64); };
    server.Get("/short",
               [](const auto&, auto& response) { response.set_content("text", "text/plain"); });
    server.Get("/long", [](const auto&, auto& response) {
      response.set_content(std::string(kLong, 'a'), "text/plain");
    });
    server.Get("/endless", [](const auto&, auto& response) {
      response.set_chunked_content_provider("text/plain", [](std::size_t, auto& sink) {
        std::this_thread::sleep_for(milliseconds(20));
        return sink.write("a", 1);
      });
    });
    port = server.bind_to_any_port("127.0.0.1");
    running = std::thread([this] { server.listen_after_bind(); });
    while (!server.is_running()) {
      std::this_thread::yield();
    }
  }
  ~LimitedServerTest() override { end(); }

  void end() {
    if (running.joinable()) {
      server.stop();
      server.disconnect();
      running.join();
    }
  }

  LimitedServer server = LimitedServer({.request = 4096,
                                        .silence = milliseconds(300),
                                        .whole = milliseconds(900),
                                        .sending = milliseconds(300),
                                        .slowest = kSlowest});
  std::thread running;
  int port = 0;
};

TEST_F(LimitedServerTest, ARequestIsAnsweredOnceAndTheConnectionClosed) {
  RawConnection connection(port);
  const std::string answer = connection.exchange(std::string(kRequest) + kRequest);
  EXPECT_EQ(answer.substr(0, 15), "HTTP/1.1 200 OK");
  EXPECT_EQ(answer.substr(answer.size() - 8), "\r\n\r\ntext");
  EXPECT_EQ(answer.find("HTTP/1.1", 1), std::string::npos);
}

TEST_F(LimitedServerTest, ALineWithoutEndIsNotReadToTheEnd) {
  RawConnection connection(port);
  std::string sent = "GET /";
  const auto start = Clock::now();
  for (int i = 0; i < 100; ++i) {
    connection.send(sent);
    sent.assign(10000, 'a');
  }
  const std::string answer = connection.readAll();
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(10));
  EXPECT_EQ(answer.find("200 OK"), std::string::npos);
  EXPECT_EQ(RawConnection(port).exchange(kRequest).substr(0, 15), "HTTP/1.1 200 OK");
}

TEST_F(LimitedServerTest, ARequestThatComesDropByDropEnds) {
  RawConnection connection(port);
  connection.send("GET /short HTTP/1.1\r\nHost: a\r\n");
  const auto start = Clock::now();
  std::thread dropping([&] {
    for (int i = 0; i < 60; ++i) {
      connection.send("X: a\r\n");
      std::this_thread::sleep_for(milliseconds(100));
    }
  });
  connection.readAll();
  const auto took = Clock::now() - start;
  dropping.join();
  EXPECT_GT(took, milliseconds(300));
  EXPECT_LT(took, milliseconds(4000));
}

TEST_F(LimitedServerTest, WhoDoesNotReadTheAnswerLosesIt) {
  RawConnection connection(port);
  connection.send("GET /long HTTP/1.1\r\nHost: a\r\n\r\n");
  std::this_thread::sleep_for(std::chrono::seconds(kLong / kSlowest + 2));
  EXPECT_LT(connection.readAll().size(), kLong);
}

TEST_F(LimitedServerTest, WhoReadsTheAnswerGetsAllOfIt) {
  EXPECT_GT(RawConnection(port).exchange("GET /long HTTP/1.1\r\nHost: a\r\n\r\n").size(), kLong);
}

TEST_F(LimitedServerTest, OpenConnectionsDoNotHoldUpTheEnd) {
  RawConnection reading(port);
  reading.send("GET /endless HTTP/1.1\r\nHost: a\r\n\r\n");
  EXPECT_FALSE(reading.readSome().empty());
  const RawConnection silent(port);
  const auto start = Clock::now();
  end();
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
}  // namespace fisheye_calibration::program
