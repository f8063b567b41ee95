// What the server answers to which path. Internal to the server.
#pragma once

#include <httplib.h>

#include <atomic>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "page/engine.h"
#include "page/picture_stream.h"
#include "page/request_checks.h"

namespace fisheye_calibration::program {

constexpr const char* kPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; "
    "connect-src 'self'; frame-ancestors 'none'; base-uri 'none'; form-action 'none'";

// Of what waits in the server at one time.
constexpr int kMostEventStreams = 32;
constexpr int kMostFrameRequests = 64;

// Counts while it lives.
class Counted {
 public:
  explicit Counted(std::atomic<int>& count) : count_(count), number_(++count) {}
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  ~Counted() { --count_; }
  int number() const { return number_; }

 private:
  std::atomic<int>& count_;
  int number_;
};

struct Service {
  Engine& engine;
  std::atomic<int> eventStreams = 0;
  std::atomic<int> frameRequests = 0;
  PictureStream raw[2] = {};
  PictureStream corrected[2] = {};
  PictureStream stitched = {};
};

void answerError(httplib::Response& response, const Refusal& refusal);
void answerJson(httplib::Response& response, const std::string& text);

// Failures of the handler become errors of the contract.
httplib::Server::Handler guarded(httplib::Server::Handler handler);

// Of the query: fails as bad input if it is there and no number within the limits.
std::optional<double> queryNumber(const httplib::Request& request, const char* name, double least,
                                  double most);
std::size_t querySource(const httplib::Request& request, const Service& service);

void addStateRoutes(httplib::Server& server, Service& service);
void addFrameRoutes(httplib::Server& server, Service& service);
void addFileRoutes(httplib::Server& server, Service& service);

}  // namespace fisheye_calibration::program
