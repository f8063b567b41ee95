// How servers of the program take up connections.
#pragma once

#include <httplib.h>

#include <cstddef>

#include "http/connection_threads.h"

namespace fisheye_calibration::program {

struct ConnectionSettings {
  std::size_t most;         // at a time
  std::size_t largestBody;  // bytes
};

// A restarted server gets its port at once; two servers never share one.
inline void setListeningOptions(socket_t socket) {
  int yes = 1;
#ifdef _WIN32
  constexpr int kOption = SO_EXCLUSIVEADDRUSE;
#else
  constexpr int kOption = SO_REUSEADDR;
#endif
  setsockopt(socket, SOL_SOCKET, kOption, reinterpret_cast<const char*>(&yes), sizeof(yes));
}

inline void setUpConnections(httplib::Server& server, const ConnectionSettings& settings) {
  // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the library deletes it
  server.new_task_queue = [most = settings.most] { return new ConnectionThreads(most); };
  server.set_socket_options(setListeningOptions);
  server.set_tcp_nodelay(true);
  server.set_payload_max_length(settings.largestBody);
}

}  // namespace fisheye_calibration::program
