// Which requests the server answers. Any page in the browser can send requests to the loopback, so
// that nothing is done for another origin, for another host name (whose owner may point it here)
// or, off the loopback, without the token.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fisheye_calibration::program {

constexpr std::size_t kLargestBody = 16384;     // bytes
constexpr std::size_t kLargestTarget = 2048;    // bytes of path and query
constexpr std::size_t kLargestHeaders = 16384;  // bytes of all of them

// A request before its body is read.
struct RequestRecord {
  std::string method;
  std::string target;                               // path and query, as they were sent
  std::string path;                                 // decoded
  std::multimap<std::string, std::string> query;    // decoded
  std::multimap<std::string, std::string> headers;  // names in lower case
};

// Where the server listens and what it asks for.
struct Access {
  std::string host = "127.0.0.1";
  int port = 0;
  std::string token;  // empty: none is needed
};

struct Refusal {
  int status = 400;
  std::string code;
  std::string text;
};

bool isLoopback(std::string_view host);
bool listensEverywhere(std::string_view host);  // at all addresses of the machine

// 256 bits of the system's random source, as hexadecimal digits.
std::string newToken();

// Takes the same time wherever the texts differ.
bool equalInConstantTime(std::string_view a, std::string_view b);

// The cookie's name holds the port, because cookies are shared by all ports of a host.
std::string cookieName(const Access& access);

// The value of a header that is there exactly once.
std::optional<std::string> onlyHeader(const RequestRecord& request, const std::string& name);

// Whether the query carries the right token, which is then to be kept in the cookie.
bool bringsToken(const RequestRecord& request, const Access& access);

// Why the request is not answered; nothing if it is.
std::optional<Refusal> refusalOf(const RequestRecord& request, const Access& access);

}  // namespace fisheye_calibration::program
