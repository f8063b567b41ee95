#include "http/limited_connection.h"

#include <algorithm>
#include <cerrno>

#ifndef _WIN32
#include <poll.h>
#endif

namespace fisheye_calibration::program {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

// A call that sends no more than this does not wait for long on systems that cannot send without
// waiting.
constexpr std::size_t kPiece = 16384;

bool interrupted() {
#ifdef _WIN32
  return false;
#else
  return errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK;
#endif
}

bool becomes(short event, socket_t socket, Clock::time_point end) {
  while (true) {
    pollfd descriptor{};
    descriptor.fd = socket;
    descriptor.events = event;
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
    const int time = static_cast<int>(std::max<long long>(0, left));
#ifdef _WIN32
    const int count = WSAPoll(&descriptor, 1, time);
#else
    const int count = poll(&descriptor, 1, time);
#endif
    if (count >= 0 || !interrupted()) {
      return count > 0;
    }
  }
}

ByteCount sendSome(socket_t socket, const char* bytes, std::size_t size) {
#ifdef _WIN32
  return ::send(socket, bytes, static_cast<int>(std::min(size, kPiece)), 0);
#else
  return ::send(socket, bytes, std::min(size, kPiece), MSG_NOSIGNAL | MSG_DONTWAIT);
#endif
}

}  // namespace

bool LimitedConnection::is_readable() const {
  const auto now = Clock::now();
  return begin_ < end_ ||
         becomes(POLLIN, socket_, std::min(now + limits_.silence, began_ + limits_.whole));
}

bool LimitedConnection::is_writable() const {
  return becomes(POLLOUT, socket_, Clock::now() + limits_.sending);
}

ByteCount LimitedConnection::read(char* bytes, std::size_t size) {
  if (begin_ == end_) {
    const std::size_t most = std::min(buffer_.size(), limits_.request - received_);
    if (most == 0 || !is_readable()) {
      return -1;
    }
    const auto count = ::recv(socket_, buffer_.data(), static_cast<int>(most), 0);
    if (count <= 0) {
      return count;
    }
    begin_ = 0;
    end_ = static_cast<std::size_t>(count);
    received_ += end_;
  }
  const std::size_t count = std::min(size, end_ - begin_);
  std::copy_n(buffer_.data() + begin_, count, bytes);
  begin_ += count;
  return static_cast<ByteCount>(count);
}

ByteCount LimitedConnection::write(const char* bytes, std::size_t size) {
  const auto end = Clock::now() + limits_.sending +
                   std::chrono::seconds(static_cast<long long>(size / limits_.slowest));
  std::size_t sent = 0;
  while (sent < size) {
    if (!becomes(POLLOUT, socket_, end)) {
      return -1;
    }
    const auto count = sendSome(socket_, bytes + sent, size - sent);
    if (count < 0 && !interrupted()) {
      return -1;
    }
    sent += static_cast<std::size_t>(std::max<ByteCount>(0, count));
  }
  return static_cast<ByteCount>(sent);
}

void LimitedConnection::finish() {
#ifdef _WIN32
  ::shutdown(socket_, SD_SEND);
#else
  ::shutdown(socket_, SHUT_WR);
#endif
  constexpr milliseconds kPatience(500);
  constexpr std::size_t kMost = 1 << 16;  // bytes
  const auto end = Clock::now() + kPatience;
  std::size_t dropped = 0;
  while (dropped < kMost && becomes(POLLIN, socket_, end)) {
    const auto count = ::recv(socket_, buffer_.data(), static_cast<int>(buffer_.size()), 0);
    if (count <= 0) {
      return;
    }
    dropped += static_cast<std::size_t>(count);
  }
}

time_t LimitedConnection::duration() const {
  return static_cast<time_t>(
      std::chrono::duration_cast<milliseconds>(Clock::now() - began_).count());
}

}  // namespace fisheye_calibration::program
