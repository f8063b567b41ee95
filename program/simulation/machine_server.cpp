#include "simulation/machine_server.h"

#include <httplib.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "http/connections.h"
#include "simulation/frame_stream.h"

namespace fisheye_calibration::program {
namespace {

constexpr int kUnavailable = 503;
constexpr int kNotFound = 404;
constexpr int kForbidden = 403;
constexpr std::size_t kMostConnections = 256;
constexpr std::chrono::milliseconds kPatience(200);

const char* const kBoundary = "frame";

std::string partHeader(std::size_t length) {
  return std::string("--") + kBoundary +
         "\r\nContent-Type: image/jpeg\r\nContent-Length: " + std::to_string(length) + "\r\n\r\n";
}

// "http://localhost:8000"
bool isOfThisMachine(std::string_view origin) {
  for (const std::string_view own : {"http://127.0.0.1", "http://localhost", "http://[::1]"}) {
    if (origin.starts_with(own) && (origin.size() == own.size() || origin[own.size()] == ':')) {
      return true;
    }
  }
  return false;
}

bool send(httplib::DataSink& sink, const std::string& text) {
  return sink.write(text.data(), text.size());
}

}  // namespace

class MachineServer::Implementation {
 public:
  Implementation(const SimulatedMachine& machine, double framesPerSecond) : machine_(machine) {
    const Scene& first = machine.scenes().front();
    for (std::size_t camera = 0; camera < machine.cameraCount(); ++camera) {
      streams_.push_back(std::make_unique<FrameStream>(framesPerSecond, frames(first)[camera],
                                                       machine.noise(first, camera)));
    }
    setUpConnections(server, {.most = kMostConnections, .largestBody = 1024});
    // Browsers name the page that sends a request: what is open in one from elsewhere must not
    // unplug cameras.
    server.set_pre_routing_handler([](const Request& request, Response& response) {
      if (!request.has_header("Origin") || isOfThisMachine(request.get_header_value("Origin"))) {
        return httplib::Server::HandlerResponse::Unhandled;
      }
      response.status = kForbidden;
      response.set_content("pages from elsewhere are not answered\n", "text/plain");
      return httplib::Server::HandlerResponse::Handled;
    });
    addStreams();
    addControls();
  }

  httplib::Server server;

 private:
  using Request = httplib::Request;
  using Response = httplib::Response;
  // Of requests without a body, some clients do not say that its length is 0: it is never read.
  using Unread = httplib::ContentReader;

  void addStreams() {
    for (std::size_t camera = 0; camera < streams_.size(); ++camera) {
      std::string name = "/";
      name += std::to_string(camera + 1);
      FrameStream& stream = *streams_[camera];
      server.Get(name + "\\.mjpg", [this, &stream](const Request& request, Response& response) {
        // FFmpeg asks for the bytes from the first one on. Newer versions of the library, whose own
        // this object is, refuse that where no length is known.
        const_cast<Request&>(request).ranges.clear();
        serveStream(stream, response);
      });
      server.Get(name + "\\.jpg", [this, &stream](const Request&, Response& response) {
        if (!isOn(response)) {
          return;
        }
        const StreamedFrame newest = stream.newerThan(0, std::chrono::seconds(5));
        const StreamedFrame next = stream.newerThan(newest.number, std::chrono::seconds(5));
        if (!next.bytes) {
          response.status = kUnavailable;
          return;
        }
        response.set_header("Cache-Control", "no-store");
        response.set_content(*next.bytes, "image/jpeg");
      });
    }
  }

  void serveStream(FrameStream& stream, Response& response) {
    if (!isOn(response)) {
      return;
    }
    response.set_header("Cache-Control", "no-store");
    response.set_header("Connection", "close");
    const std::uint64_t plugged = plugged_;
    response.set_content_provider(
        std::string("multipart/x-mixed-replace; boundary=").append(kBoundary),
        [this, &stream, plugged, last = std::uint64_t{0}](std::size_t,
                                                          httplib::DataSink& sink) mutable {
          const StreamedFrame frame = stream.newerThan(last, kPatience);
          if (!on_ || plugged != plugged_) {
            sink.done();
            return true;
          }
          if (!frame.bytes || frame.number == last) {
            return true;
          }
          last = frame.number;
          return send(sink, partHeader(frame.bytes->size())) && send(sink, *frame.bytes) &&
                 send(sink, "\r\n");
        });
  }

  void addControls() {
    server.Get("/scene", [this](const Request&, Response& response) {
      response.set_content(state(), "application/json");
    });
    server.Post(
        "/scene/([^/]+)", [this](const Request& request, Response& response, const Unread&) {
          response.set_header("Connection", "close");
          const auto& scenes = machine_.scenes();
          const std::string name = request.matches[1];
          const auto found = std::find_if(scenes.begin(), scenes.end(),
                                          [&](const Scene& scene) { return scene.name == name; });
          if (found == scenes.end()) {
            response.status = kNotFound;
            response.set_content("there is no such scene\n", "text/plain");
            return;
          }
          show(*found);
          response.set_content(state(), "application/json");
        });
    for (const bool on : {false, true}) {
      server.Post(on ? "/on" : "/off",
                  [this, on](const Request&, Response& response, const Unread&) {
                    response.set_header("Connection", "close");
                    if (on_.exchange(on) != on) {
                      ++plugged_;
                    }
                    response.set_content(state(), "application/json");
                  });
    }
  }

  bool isOn(Response& response) const {
    if (!on_) {
      response.status = kUnavailable;
      response.set_content("the cameras are unplugged\n", "text/plain");
    }
    return on_;
  }

  void show(const Scene& scene) {
    const std::lock_guard lock(sceneMutex_);
    const std::vector<cv::Mat>& clean = frames(scene);
    for (std::size_t camera = 0; camera < streams_.size(); ++camera) {
      streams_[camera]->show(clean[camera], machine_.noise(scene, camera));
    }
    scene_ = static_cast<std::size_t>(&scene - machine_.scenes().data());
  }

  // Of all cameras, without noise; drawn once.
  const std::vector<cv::Mat>& frames(const Scene& scene) {
    std::vector<cv::Mat>& found = frames_[scene.name];
    for (std::size_t camera = found.size(); camera < machine_.cameraCount(); ++camera) {
      found.push_back(machine_.cleanFrame(scene, camera));
    }
    return found;
  }

  std::string state() const {
    const std::lock_guard lock(sceneMutex_);
    nlohmann::json names = nlohmann::json::array();
    for (const Scene& scene : machine_.scenes()) {
      names.push_back(scene.name);
    }
    return nlohmann::json({{"on", on_.load()},
                           {"scene", machine_.scenes()[scene_].name},
                           {"scenes", std::move(names)}})
               .dump() +
           "\n";
  }

  const SimulatedMachine& machine_;
  std::map<std::string, std::vector<cv::Mat>> frames_;
  std::vector<std::unique_ptr<FrameStream>> streams_;
  mutable std::mutex sceneMutex_;  // of frames_ and scene_
  std::size_t scene_ = 0;
  std::atomic<bool> on_ = true;
  std::atomic<std::uint64_t> plugged_ = 0;  // how often that has changed
};

MachineServer::MachineServer(const SimulatedMachine& machine, double framesPerSecond)
    : implementation_(std::make_unique<Implementation>(machine, framesPerSecond)) {}

MachineServer::~MachineServer() = default;

int MachineServer::bind(const std::string& host, int port) {
  httplib::Server& server = implementation_->server;
  if (port == 0) {
    return std::max(0, server.bind_to_any_port(host));
  }
  return server.bind_to_port(host, port) ? port : 0;
}

bool MachineServer::run() { return implementation_->server.listen_after_bind(); }

void MachineServer::stop() { implementation_->server.stop(); }

}  // namespace fisheye_calibration::program
