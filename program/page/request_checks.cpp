#include "page/request_checks.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <random>

#include "base/text.h"
#include "http/listen_address.h"

namespace fisheye_calibration::program {
namespace {

constexpr int kUsualPort = 80;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// "192.168.1.5" or "[...]": an address, not a name that somebody can point elsewhere.
bool isAddress(std::string_view host) {
  if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
    return std::all_of(host.begin() + 1, host.end() - 1, [](char c) {
      return std::isxdigit(static_cast<unsigned char>(c)) != 0 || c == ':' || c == '.';
    });
  }
  return std::count(host.begin(), host.end(), '.') == 3 &&
         std::all_of(host.begin(), host.end(), [](char c) { return isDigit(c) || c == '.'; });
}

bool isOwnHost(std::string_view value, const Access& access) {
  std::string port(1, ':');
  port += std::to_string(access.port);
  std::string_view host = value;
  if (host.ends_with(port)) {
    host.remove_suffix(port.size());
  } else if (access.port != kUsualPort) {  // which browsers leave out
    return false;
  }
  if (equalIgnoringCase(host, hostInAddress(access.host))) {
    return true;
  }
  if (isLoopback(access.host)) {
    return host == "127.0.0.1" || host == "localhost" || host == "[::1]";
  }
  if (listensEverywhere(access.host)) {
    return isAddress(host) || host == "localhost";
  }
  return false;
}

std::string cookieValue(std::string_view cookies, std::string_view name) {
  while (!cookies.empty()) {
    const std::size_t end = std::min(cookies.find(';'), cookies.size());
    std::string_view one = cookies.substr(0, end);
    cookies.remove_prefix(std::min(end + 1, cookies.size()));
    while (!one.empty() && one.front() == ' ') {
      one.remove_prefix(1);
    }
    if (one.size() > name.size() && one.substr(0, name.size()) == name && one[name.size()] == '=') {
      return std::string(one.substr(name.size() + 1));
    }
  }
  return "";
}

bool hasToken(const RequestRecord& request, const Access& access) {
  if (access.token.empty()) {
    return true;
  }
  const auto cookies = onlyHeader(request, "cookie");
  return cookies && equalInConstantTime(cookieValue(*cookies, cookieName(access)), access.token);
}

Refusal forbidden(const std::string& text) { return {403, "forbidden", text}; }

bool tooLarge(const RequestRecord& request) {
  std::size_t size = 0;
  for (const auto& [name, value] : request.headers) {
    size += name.size() + value.size();
  }
  return size > kLargestHeaders || request.target.size() > kLargestTarget;
}

std::optional<Refusal> refusalOfSite(const RequestRecord& request, const std::string& host) {
  const auto [first, last] = request.headers.equal_range("sec-fetch-site");
  for (auto header = first; header != last; ++header) {
    const bool opened = header->second == "none" && request.method == "GET";
    if (header->second != "same-origin" && !opened) {
      return forbidden("requests from other pages are not answered");
    }
  }
  const bool hasOrigin = request.headers.contains("origin");
  const bool ownOrigin = onlyHeader(request, "origin") == std::optional("http://" + host);
  if (hasOrigin ? !ownOrigin : request.method == "POST") {
    return forbidden("requests from other pages are not answered");
  }
  return std::nullopt;
}

std::optional<Refusal> refusalOfBody(const RequestRecord& request) {
  if (request.headers.contains("transfer-encoding") ||
      request.headers.contains("content-encoding")) {
    return Refusal{400, "badRequest", "send the body as it is, with its length"};
  }
  if (request.headers.contains("range")) {  // many ranges could make a short answer very long
    return Refusal{400, "badRequest", "ask for the whole of it"};
  }
  const auto length = onlyHeader(request, "content-length");
  if (request.method != "POST") {
    return !request.headers.contains("content-length") || length == std::optional<std::string>("0")
               ? std::nullopt
               : std::optional(Refusal{400, "badRequest", "only a POST has a body"});
  }
  if (!length || length->empty() || !std::all_of(length->begin(), length->end(), isDigit)) {
    return Refusal{400, "badRequest", "the length of the body is missing"};
  }
  if (length->size() > 7 || std::stoul(*length) > kLargestBody) {
    return Refusal{413, "tooLarge", "the body is too long"};
  }
  const auto type = onlyHeader(request, "content-type");
  if (!type || !(*type == "application/json" || type->starts_with("application/json;"))) {
    return Refusal{415, "notJson", "send application/json"};
  }
  return std::nullopt;
}

}  // namespace

bool listensEverywhere(std::string_view host) { return host == "0.0.0.0" || host == "::"; }

bool isLoopback(std::string_view host) {
  return host == "localhost" || host == "::1" || (host.starts_with("127.") && isAddress(host));
}

std::string newToken() {
  std::random_device random;
  constexpr const char* kDigits = "0123456789abcdef";
  std::string token;
  for (int i = 0; i < 64; ++i) {
    token += kDigits[random() & 15u];
  }
  return token;
}

bool equalInConstantTime(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) {
    return false;
  }
  unsigned difference = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    difference |=
        static_cast<unsigned>(static_cast<unsigned char>(a[i]) ^ static_cast<unsigned char>(b[i]));
  }
  return difference == 0;
}

std::string cookieName(const Access& access) {
  return "fisheye-calibration-" + std::to_string(access.port);
}

std::optional<std::string> onlyHeader(const RequestRecord& request, const std::string& name) {
  const auto [first, last] = request.headers.equal_range(name);
  if (first == last || std::next(first) != last) {
    return std::nullopt;
  }
  return first->second;
}

bool bringsToken(const RequestRecord& request, const Access& access) {
  const auto [first, last] = request.query.equal_range("token");
  return !access.token.empty() && request.method == "GET" && request.path == "/" && first != last &&
         std::next(first) == last && equalInConstantTime(first->second, access.token);
}

std::optional<Refusal> refusalOf(const RequestRecord& request, const Access& access) {
  if (tooLarge(request)) {
    return Refusal{413, "tooLarge", "the request is too long"};
  }
  const auto host = onlyHeader(request, "host");
  if (!host || !isOwnHost(*host, access)) {
    return forbidden("open the address that the program has printed");
  }
  if (request.method != "GET" && request.method != "POST") {
    return Refusal{405, "notAllowed", "only GET and POST are answered"};
  }
  // A link from another page may bring the token: whoever knows it may come from anywhere.
  if (bringsToken(request, access)) {
    return refusalOfBody(request);
  }
  if (auto refusal = refusalOfSite(request, *host)) {
    return refusal;
  }
  if (!hasToken(request, access)) {
    return forbidden("open the address that the program has printed, with its token");
  }
  return refusalOfBody(request);
}

}  // namespace fisheye_calibration::program
