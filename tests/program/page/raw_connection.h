// A connection to the loopback that sends what a test says, well formed or not.
#pragma once

#include <httplib.h>  // brings the system's sockets

#include <string>

namespace fisheye_calibration::program {

class RawConnection {
 public:
  explicit RawConnection(int port) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof(address));
  }
  RawConnection(const RawConnection&) = delete;
  RawConnection& operator=(const RawConnection&) = delete;
  ~RawConnection() {
#ifdef _WIN32
    closesocket(socket_);
#else
    close(socket_);
#endif
  }

  void send(const std::string& text) {
#ifdef MSG_NOSIGNAL
    constexpr int kFlags = MSG_NOSIGNAL;
#else
    constexpr int kFlags = 0;
#endif
    ::send(socket_, text.data(), static_cast<int>(text.size()), kFlags);
  }

  std::string readSome() {
    char bytes[4096];
    const auto count = ::recv(socket_, bytes, sizeof(bytes), 0);
    return count > 0 ? std::string(bytes, static_cast<std::size_t>(count)) : "";
  }

  // Until the server closes the connection.
  std::string readAll() {
    std::string all;
    for (std::string some = readSome(); !some.empty(); some = readSome()) {
      all += some;
    }
    return all;
  }

  std::string exchange(const std::string& text) {
    send(text);
    return readAll();
  }

 private:
  socket_t socket_;
};

}  // namespace fisheye_calibration::program
