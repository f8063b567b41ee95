#include "http/listen_address.h"

#include <cstddef>

#include "base/failure.h"
#include "base/text.h"

namespace fisheye_calibration::program {

ListenAddress parseListenAddress(const std::string& option, const std::string& text) {
  const std::size_t colon = text.rfind(':');
  if (colon != std::string::npos) {
    std::string host = text.substr(0, colon);
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
      host = host.substr(1, host.size() - 2);
    } else if (host.find(':') != std::string::npos) {
      host.clear();
    }
    const auto port = parseInteger(text.substr(colon + 1));
    if (!host.empty() && port && *port >= 0 && *port <= 65535) {
      return {.host = host, .port = *port};
    }
  }
  failBadInput(option + ": give an address and a port like 127.0.0.1:8737, not " + inQuotes(text));
}

std::string hostInAddress(const std::string& host) {
  const bool isIpv6 = host.find(':') != std::string::npos;
  return isIpv6 ? "[" + host + "]" : host;
}

std::string authority(const std::string& host, int port) {
  return hostInAddress(host) + ":" + std::to_string(port);
}

}  // namespace fisheye_calibration::program
