#include "page/server.h"

#include <httplib.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/failure.h"
#include "base/text.h"
#include "http/connections.h"
#include "http/limited_server.h"
#include "http/listen_address.h"
#include "page/routes.h"

namespace fisheye_calibration::program {
namespace {

constexpr std::size_t kMostConnections = 2048;
constexpr ConnectionLimits kLimits = {.request = 2 * kLargestHeaders + kLargestBody,
                                      .silence = std::chrono::seconds(2),
                                      .whole = std::chrono::seconds(10),
                                      .sending = std::chrono::seconds(5),
                                      .slowest = 32768};

RequestRecord recordOf(const httplib::Request& request) {
  RequestRecord record{.method = request.method, .target = request.target, .path = request.path};
  record.query.insert(request.params.begin(), request.params.end());
  for (const auto& [name, value] : request.headers) {
    record.headers.emplace(lowerCase(name), value);
  }
  return record;
}

// Without a redirection: after a link on another site, such as a message, browsers would follow it
// without the cookie.
void rememberToken(httplib::Response& response, const Access& access) {
  response.set_header("Set-Cookie", cookieName(access) + "=" + access.token +
                                        "; Path=/; HttpOnly; SameSite=Strict");
}

}  // namespace

struct Server::Parts {
  explicit Parts(Engine& engine) : service{.engine = engine} {}

  LimitedServer http = LimitedServer(kLimits);
  Service service;
  Access access;
};

Server::Server(Engine& engine, const std::string& host, int port)
    : parts_(std::make_unique<Parts>(engine)) {
  LimitedServer& http = parts_->http;
  Access& access = parts_->access;
  access.host = host;
  if (!isLoopback(host)) {
    access.token = newToken();
  }
  setUpConnections(http, {.most = kMostConnections, .largestBody = kLargestBody});
  http.set_default_headers({{"Content-Security-Policy", kPolicy},
                            {"X-Content-Type-Options", "nosniff"},
                            {"Referrer-Policy", "no-referrer"},
                            {"X-Frame-Options", "DENY"},
                            {"Cross-Origin-Resource-Policy", "same-origin"},
                            {"Cache-Control", "no-store"}});
  http.set_pre_routing_handler([&access](const auto& request, auto& response) {
    const RequestRecord record = recordOf(request);
    if (const auto refusal = refusalOf(record, access)) {
      answerError(response, *refusal);
      return httplib::Server::HandlerResponse::Handled;
    }
    if (bringsToken(record, access)) {
      rememberToken(response, access);
    }
    return httplib::Server::HandlerResponse::Unhandled;
  });
  http.set_error_handler([](const httplib::Request&, httplib::Response& response) {
    if (response.body.empty()) {
      const bool missing = response.status == 404;
      answerError(response, {response.status, missing ? "notFound" : "badRequest",
                             missing ? "there is no such page" : "the request is not understood"});
    }
  });
  addStateRoutes(http, parts_->service);
  addFrameRoutes(http, parts_->service);
  addFileRoutes(http, parts_->service);
  access.port = port == 0 ? http.bind_to_any_port(host) : port;
  if (access.port <= 0 || (port != 0 && !http.bind_to_port(host, port))) {
    failBadInput("--listen: " + authority(host, port) +
                 " cannot be used; is another program listening there?");
  }
  http.letManyWait();
}

Server::~Server() = default;

const Access& Server::access() const { return parts_->access; }

std::string Server::address() const {
  const Access& access = parts_->access;
  return "http://" + authority(access.host, access.port) + "/" +
         (access.token.empty() ? "" : "?token=" + access.token);
}

bool Server::run() { return parts_->http.listen_after_bind(); }

void Server::stop() {
  parts_->http.stop();
  parts_->http.disconnect();
}

bool Server::runs() const { return parts_->http.is_running(); }

}  // namespace fisheye_calibration::program
