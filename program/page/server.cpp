#include "page/server.h"

#include <httplib.h>

#include <nlohmann/json.hpp>
#include <utility>

#include "base/failure.h"
#include "base/text.h"
#include "http/connection_threads.h"
#include "http/listen_address.h"
#include "http/listening_options.h"
#include "page/routes.h"

namespace fisheye_calibration::program {
namespace {

constexpr std::size_t kMostConnections = 2048;
constexpr int kPatience = 2;  // seconds for a request to begin, and between its parts

// The library lets five connections wait to be taken up, and of more the system drops some for a
// second.
class PatientServer : public httplib::Server {
 public:
  void letManyWait() { ::listen(svr_sock_, kMostWaiting); }

 private:
  static constexpr int kMostWaiting = 512;
};

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

  PatientServer http;
  Service service;
  Access access;
};

Server::Server(Engine& engine, const std::string& host, int port)
    : parts_(std::make_unique<Parts>(engine)) {
  PatientServer& http = parts_->http;
  Access& access = parts_->access;
  access.host = host;
  if (!isLoopback(host)) {
    access.token = newToken();
  }
  http.new_task_queue = [] { return new ConnectionThreads(kMostConnections); };
  http.set_socket_options(setListeningOptions);
  http.set_tcp_nodelay(true);
  // One request a connection: what follows a refused request in the same stream is never read.
  http.set_keep_alive_max_count(1);
  http.set_keep_alive_timeout(kPatience);
  http.set_read_timeout(kPatience);
  http.set_write_timeout(5);
  http.set_payload_max_length(kLargestBody);
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

void Server::run() { parts_->http.listen_after_bind(); }

void Server::stop() { parts_->http.stop(); }

}  // namespace fisheye_calibration::program
