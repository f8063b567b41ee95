// The library's server with limits on every connection, each of which brings one request.
#pragma once

#include <httplib.h>

#include <mutex>
#include <set>

#include "http/limited_connection.h"

namespace fisheye_calibration::program {

class LimitedServer : public httplib::Server {
 public:
  explicit LimitedServer(const ConnectionLimits& limits) : limits_(limits) {}

  // The library lets five connections wait to be taken up, and of more the system drops some for a
  // second.
  void letManyWait() { ::listen(svr_sock_, kMostWaiting); }

  // Ends the connections that are open, and those to come.
  void disconnect() {
    const std::lock_guard lock(mutex_);
    ended_ = true;
    for (const socket_t socket : open_) {
      shutDown(socket);
    }
  }

 private:
  static constexpr int kMostWaiting = 512;

  // Hides that versions of the library want different arguments.
  template <class Self>
  static bool answerOne(Self& self, httplib::Stream& stream) {
    bool closed = false;
    if constexpr (requires { self.process_request(stream, true, closed, nullptr); }) {
      return self.process_request(stream, true, closed, nullptr);
    } else {
      return self.process_request(stream, "", 0, "", 0, true, closed, nullptr);
    }
  }

  bool process_and_close_socket(socket_t socket) override {
    bool answered = false;
    if (enter(socket)) {
      LimitedConnection connection(socket, limits_);
      answered = connection.is_readable() && answerOne(*this, connection);
      connection.finish();
      leave(socket);
    }
    shutDown(socket);
    close(socket);
    return answered;
  }

  bool enter(socket_t socket) {
    const std::lock_guard lock(mutex_);
    if (!ended_) {
      open_.insert(socket);
    }
    return !ended_;
  }

  void leave(socket_t socket) {
    const std::lock_guard lock(mutex_);
    open_.erase(socket);
  }

#ifdef _WIN32
  static void shutDown(socket_t socket) { ::shutdown(socket, SD_BOTH); }
  static void close(socket_t socket) { ::closesocket(socket); }
#else
  static void shutDown(socket_t socket) { ::shutdown(socket, SHUT_RDWR); }
  static void close(socket_t socket) { ::close(socket); }
#endif

  ConnectionLimits limits_;
  std::mutex mutex_;
  std::set<socket_t> open_;
  bool ended_ = false;
};

}  // namespace fisheye_calibration::program
