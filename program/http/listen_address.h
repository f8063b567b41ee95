// Where a server of the program answers.
#pragma once

#include <string>

namespace fisheye_calibration::program {

struct ListenAddress {
  std::string host;  // a name or an address, an IPv6 one without brackets
  int port = 0;      // 0: a free one
};

// "127.0.0.1:8737" or "[::1]:8737". Fails as bad input, naming the option.
ListenAddress parseListenAddress(const std::string& option, const std::string& text);

// As it stands in a URL: an IPv6 address in brackets.
std::string hostInAddress(const std::string& host);

// Host and port, as they stand in a URL.
std::string authority(const std::string& host, int port);

}  // namespace fisheye_calibration::program
