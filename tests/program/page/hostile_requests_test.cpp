// What a foreign page, a careless program or an attacker on the same machine may send.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "program/page/raw_connection.h"
#include "program/page/running_server.h"

namespace fisheye_calibration::program {
namespace {

using nlohmann::json;

std::string actionText(const std::string& host, const std::string& origin,
                       const std::string& type) {
  const std::string body = R"({"action":"setStep","step":5})";
  return "POST /api/actions HTTP/1.1\r\nHost: " + host + "\r\nOrigin: " + origin +
         "\r\nContent-Type: " + type + "\r\nContent-Length: " + std::to_string(body.size()) +
         "\r\n\r\n" + body;
}

TEST(HostileRequests, ForeignPagesChangeNothing) {
  const RunningServer running;
  const std::string own = running.host();
  const std::string type = "application/json";
  const auto status = [&](const std::string& request) {
    return RawConnection(running.port()).exchange(request).substr(0, 12);
  };
  EXPECT_EQ(status(actionText(own, "http://evil.example", type)), "HTTP/1.1 403");
  EXPECT_EQ(status(actionText("evil.example", "http://evil.example", type)), "HTTP/1.1 403");
  EXPECT_EQ(status(actionText(own, "http://" + own, "text/plain")), "HTTP/1.1 415");
  EXPECT_EQ(running.state()["step"], 1);
  EXPECT_EQ(status(actionText(own, "http://" + own, type)), "HTTP/1.1 200");
  EXPECT_EQ(running.state()["step"], 5);
}

TEST(HostileRequests, TheBodyOfARefusedRequestIsNotTakenForARequest) {
  const RunningServer running;
  const std::string own = running.host();
  const std::string inner = actionText(own, "http://" + own, "application/json");
  const std::string outer = "POST / HTTP/1.1\r\nHost: " + own +
                            "\r\nOrigin: http://evil.example\r\nContent-Type: text/plain\r\n"
                            "Content-Length: " +
                            std::to_string(inner.size()) + "\r\n\r\n" + inner;
  EXPECT_EQ(RawConnection(running.port()).exchange(outer).substr(0, 12), "HTTP/1.1 403");
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_EQ(running.state()["step"], 1);
}

TEST(HostileRequests, LongAndBrokenRequestsAreAnsweredWithErrors) {
  const RunningServer running;
  const std::string host = "Host: " + running.host() + "\r\n";
  const auto status = [&](const std::string& request) {
    return RawConnection(running.port()).exchange(request).substr(0, 12);
  };
  EXPECT_EQ(status("GET /" + std::string(4000, 'x') + " HTTP/1.1\r\n" + host + "\r\n"),
            "HTTP/1.1 413");
  EXPECT_EQ(status("GET / HTTP/1.1\r\n" + host + "X: " + std::string(7000, 'x') + "\r\nY: " +
                   std::string(7000, 'x') + "\r\nZ: " + std::string(7000, 'x') + "\r\n\r\n"),
            "HTTP/1.1 413");
  EXPECT_EQ(status("POST /api/actions HTTP/1.1\r\n" + host + "Origin: http://" + running.host() +
                   "\r\nContent-Type: application/json\r\nContent-Length: 999999999\r\n\r\n"),
            "HTTP/1.1 413");
  EXPECT_EQ(status("PUT / HTTP/1.1\r\n" + host + "\r\n"), "HTTP/1.1 405");
  EXPECT_EQ(status("\r\n\r\n").substr(0, 8).substr(0, 5), "HTTP/");
  EXPECT_EQ(running.get("/api/state")->status, 200);
}

TEST(HostileRequests, UnfinishedRequestsEndByThemselves) {
  const RunningServer running;
  RawConnection connection(running.port());
  connection.send("GET / HTTP/1.1\r\nHost: ");
  const auto start = std::chrono::steady_clock::now();
  connection.readAll();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(6));
}

TEST(HostileRequests, AThousandConnectionsDoNotKeepThePageOut) {
  const RunningServer running;
  std::vector<std::unique_ptr<RawConnection>> connections;
  for (int i = 0; i < 1000; ++i) {
    connections.push_back(std::make_unique<RawConnection>(running.port()));
    if (i % 2 == 0) {
      connections.back()->send("GET /api/events HTTP/1.1\r\nHost: " + running.host() + "\r\n\r\n");
    }
  }
  const auto frame = running.get("/frames/0/raw.jpg");
  ASSERT_TRUE(frame);
  EXPECT_EQ(frame->status, 200);
  EXPECT_EQ(running.get("/api/state")->status, 200);
  connections.clear();
  EXPECT_TRUE(within(std::chrono::seconds(20), [&] {
    RawConnection stream(running.port());
    stream.send("GET /api/events HTTP/1.1\r\nHost: " + running.host() + "\r\n\r\n");
    return stream.readSome().substr(0, 12) == "HTTP/1.1 200";
  }));
}

TEST(HostileRequests, NumbersThatAreNearlyZeroDoNoHarm) {
  const RunningServer running;
  RawConnection events(running.port());
  events.send("GET /api/events HTTP/1.1\r\nHost: " + running.host() + "\r\n\r\n");
  EXPECT_FALSE(events.readSome().empty());
  EXPECT_EQ(
      running.act(
          {{"action", "setBed"}, {"x", 1e-310}, {"y", -1e-320}, {"width", 600}, {"height", 400}}),
      200);
  EXPECT_FALSE(events.readSome().empty());
  EXPECT_EQ(running.state()["bed"]["width"], 600);
  EXPECT_NEAR(running.state()["bed"]["x"].get<double>(), 0, 1e-300);
}

TEST(HostileRequests, NamesFromThePageReachNoFile) {
  const RunningServer running;
  EXPECT_EQ(running.post({{"action", "save"}, {"folder", "/tmp"}, {"name", "../x"}})->status, 409);
  EXPECT_EQ(json::parse(running.post({{"action", "save"}})->body)["error"]["text"],
            "the program was started without --output; download the files instead");
}

TEST(HostileRequests, OffTheLoopbackTheTokenLetsIn) {
  Engine engine({.sources = {"fake"},
                 .open = openerOf(RunningServer::chessboardCamera()),
                 .folder = {},
                 .version = "1.2.3"});
  Server server(engine, "0.0.0.0", 0);
  std::thread running([&] { server.run(); });
  const auto statusOf = [&](const std::string& path, const httplib::Headers& headers) {
    const auto result = httplib::Client("127.0.0.1", server.access().port).Get(path, headers);
    return result ? result->status : 0;
  };
  const std::string token = server.access().token;
  EXPECT_EQ(server.address(),
            "http://0.0.0.0:" + std::to_string(server.access().port) + "/?token=" + token);
  EXPECT_EQ(statusOf("/", {}), 403);
  EXPECT_EQ(statusOf("/api/state", {}), 403);
  EXPECT_EQ(statusOf("/?token=" + std::string(64, '0'), {}), 403);
  EXPECT_EQ(statusOf("/api/state?token=" + token, {}), 403) << "it is for the page only";

  // As after a link on another site.
  const auto page = httplib::Client("127.0.0.1", server.access().port)
                        .Get("/?token=" + token, {{"Sec-Fetch-Site", "cross-site"}});
  ASSERT_TRUE(page);
  EXPECT_EQ(page->status, 200);
  EXPECT_EQ(page->get_header_value("Content-Type"), "text/html; charset=utf-8");
  const std::string cookie = page->get_header_value("Set-Cookie");
  EXPECT_EQ(cookie,
            cookieName(server.access()) + "=" + token + "; Path=/; HttpOnly; SameSite=Strict");
  const std::string kept = cookie.substr(0, cookie.find(';'));
  EXPECT_EQ(statusOf("/api/state", {{"Cookie", kept}, {"Sec-Fetch-Site", "same-origin"}}), 200);
  EXPECT_EQ(statusOf("/api/state", {{"Cookie", kept}, {"Sec-Fetch-Site", "cross-site"}}), 403);
  engine.stop();
  server.stop();
  running.join();
}

}  // namespace
}  // namespace fisheye_calibration::program
