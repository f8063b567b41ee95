// Options of the sockets at which servers of the program listen.
#pragma once

#include <httplib.h>

namespace fisheye_calibration::program {

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

}  // namespace fisheye_calibration::program
