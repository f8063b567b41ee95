// The HTTP server of the guided page.
#pragma once

#include <memory>
#include <string>

#include "page/engine.h"
#include "page/request_checks.h"

namespace fisheye_calibration::program {

class Server {
 public:
  // Listens at the address from then on; port 0 takes a free one. Off the loopback, a token is
  // made. Fails as bad input if that is not possible.
  Server(Engine& engine, const std::string& host, int port);
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  ~Server();

  // To be opened in a browser, with the token if there is one.
  std::string address() const;
  const Access& access() const;

  // Answers until stop() is called from another thread, which has no effect before runs() is true.
  // False if the system does not let it go on.
  bool run();
  void stop();
  bool runs() const;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace fisheye_calibration::program
