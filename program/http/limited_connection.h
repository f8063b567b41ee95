// A connection that costs its server only so much memory and time. The library for HTTP limits the
// length of a line only after it has read it, and waits anew after every byte.
#pragma once

#include <httplib.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <string>
#include <utility>

namespace fisheye_calibration::program {

struct ConnectionLimits {
  std::size_t request;                // bytes
  std::chrono::milliseconds silence;  // before the request and between its parts
  std::chrono::milliseconds whole;    // of the request
  std::chrono::milliseconds sending;  // of one piece of the answer; long ones may take longer:
  std::size_t slowest;                // bytes a second
};

// A number of bytes, or -1.
using ByteCount = decltype(std::declval<httplib::Stream&>().read(nullptr, std::size_t{0}));

class LimitedConnection : public httplib::Stream {
 public:
  // Does not own the socket.
  LimitedConnection(socket_t socket, const ConnectionLimits& limits)
      : socket_(socket), limits_(limits), began_(Clock::now()) {}

  // The stream's interface differs between the versions of the library, which call more or fewer of
  // these.
  // NOLINTBEGIN(modernize-use-override,cppcoreguidelines-*,readability-identifier-naming)
  bool is_readable() const;
  bool is_writable() const;
  bool wait_readable() const { return is_readable(); }
  bool wait_writable() const { return is_writable(); }
  ByteCount read(char* bytes, std::size_t size);
  ByteCount write(const char* bytes, std::size_t size);
  void get_remote_ip_and_port(std::string& /*address*/, int& /*port*/) const {}
  void get_local_ip_and_port(std::string& /*address*/, int& /*port*/) const {}
  socket_t socket() const { return socket_; }
  time_t duration() const;
  // NOLINTEND(modernize-use-override,cppcoreguidelines-*,readability-identifier-naming)

  // Lets the other end read the answer before the connection is closed: what has not been read of a
  // request would take it away.
  void finish();

 private:
  using Clock = std::chrono::steady_clock;

  socket_t socket_;
  ConnectionLimits limits_;
  Clock::time_point began_;
  std::size_t received_ = 0;
  std::array<char, 4096> buffer_{};
  std::size_t begin_ = 0;  // of what has been received and not read
  std::size_t end_ = 0;
};

}  // namespace fisheye_calibration::program
