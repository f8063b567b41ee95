// Arbitrary requests to the guided page: checking them, carrying out their action and showing the
// state after it does no harm, and none that lacks the own host, or for a change the own origin, is
// let through.
//
// Input: method, path and query, then header lines up to an empty line, then the body.
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "base/failure.h"
#include "page/actions.h"
#include "page/request_checks.h"
#include "page/session.h"
#include "page/session_json.h"

using namespace fisheye_calibration::program;

namespace {

void require(bool condition) {
  if (!condition) {
    std::abort();
  }
}

std::string_view takeUntil(std::string_view& rest, char end) {
  const std::size_t length = rest.find(end);
  const std::string_view part = rest.substr(0, length);
  rest.remove_prefix(length == std::string_view::npos ? rest.size() : length + 1);
  return part;
}

RequestRecord readRequest(std::string_view& rest) {
  RequestRecord request;
  request.method = takeUntil(rest, ' ');
  request.target = takeUntil(rest, '\n');
  std::string_view target = request.target;
  request.path = takeUntil(target, '?');
  while (!target.empty()) {
    std::string_view pair = takeUntil(target, '&');
    const std::string name(takeUntil(pair, '='));
    request.query.emplace(name, pair);
  }
  while (!rest.empty()) {
    std::string_view line = takeUntil(rest, '\n');
    if (line.empty()) {
      break;
    }
    const std::string name(takeUntil(line, ':'));
    request.headers.emplace(name, line);
  }
  return request;
}

void checkLetThrough(const RequestRecord& request, const Access& access) {
  if (refusalOf(request, access)) {
    return;
  }
  const auto host = onlyHeader(request, "host");
  require(host.has_value());
  require(host->ends_with(":8737"));
  require(request.method == "GET" || request.method == "POST");
  if (request.method == "POST") {
    require(onlyHeader(request, "origin") == "http://" + *host);
  }
  if (!access.token.empty() && !bringsToken(request, access)) {
    require(onlyHeader(request, "cookie").value_or("").find(access.token) != std::string::npos);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  const RequestRecord request = readRequest(rest);
  checkLetThrough(request, {.host = "127.0.0.1", .port = 8737, .token = ""});
  checkLetThrough(request, {.host = "192.168.1.5", .port = 8737, .token = "0123456789abcdef"});
  std::optional<Action> action;
  try {
    action = parseAction(rest, 2);
  } catch (const Failure& failure) {
    require(failure.code() == kExitBadInput);
    return 0;
  }
  Session session({"left", "right"}, "folder");
  try {
    session.apply(*action);
  } catch (const Failure& failure) {
    require(failure.code() == kExitJobFailed);
  }
  require(nlohmann::json::accept(snapshotOf(session, {"id", "version"})));
  return 0;
}
