// A server on a free port of the loopback, with a fake camera that sees a chessboard.
#pragma once

#include <httplib.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "page/server.h"
#include "program/page/fake_machine.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {

class RunningServer {
 public:
  explicit RunningServer(const std::filesystem::path& folder = {}, int port = 0,
                         std::vector<std::string> sources = {"fake"},
                         std::shared_ptr<FakeCamera> shown = nullptr)
      : camera(shown ? shown : chessboardCamera()),
        engine({.sources = std::move(sources),
                .open = openerOf(camera),
                .folder = folder,
                .version = "1.2.3"}),
        server(engine, "127.0.0.1", port),
        thread_([this] { server.run(); }) {}
  ~RunningServer() {
    engine.stop();
    server.stop();
    thread_.join();
  }

  static std::shared_ptr<FakeCamera> chessboardCamera() {
    auto made = std::make_shared<FakeCamera>();
    made->picture = drawTarget(SyntheticCamera(), SyntheticTarget());
    return made;
  }

  int port() const { return server.access().port; }
  std::string host() const { return "127.0.0.1:" + std::to_string(port()); }

  httplib::Client client() const {
    httplib::Client made("127.0.0.1", port());
    made.set_read_timeout(10);
    return made;
  }

  httplib::Result get(const std::string& path) const { return client().Get(path); }

  httplib::Result post(const nlohmann::json& action) const {
    return client().Post("/api/actions", {{"Origin", "http://" + host()}}, action.dump(),
                         "application/json");
  }

  int act(const nlohmann::json& action) const {
    const auto result = post(action);
    return result ? result->status : 0;
  }

  nlohmann::json state() const {
    const auto result = get("/api/state");
    return result ? nlohmann::json::parse(result->body) : nlohmann::json();
  }
  nlohmann::json source(std::size_t index = 0) const { return state()["sources"][index]; }

  template <class Condition>
  bool becomes(const Condition& condition) const {
    return within(std::chrono::seconds(20), [&] { return condition(source()); });
  }

  // Chooses the chessboard that the camera sees and waits until a view can be taken.
  bool findTarget() const {
    return act({{"action", "setTarget"},
                {"kind", "chessboard"},
                {"columns", 9},
                {"rows", 7},
                {"spacing", 30}}) == 200 &&
           act({{"action", "setStep"}, {"step", 2}}) == 200 &&
           within(std::chrono::seconds(20), [&] {
             return act({{"action", "takeView"}}) == 200;
           });
  }

  bool calibrate() const {
    return act({{"action", "calibrate"}}) == 200 && becomes([](const nlohmann::json& source) {
             return source["calibration"]["status"] == "done";
           });
  }

  std::shared_ptr<FakeCamera> camera;
  Engine engine;
  Server server;

 private:
  std::thread thread_;
};

}  // namespace fisheye_calibration::program
