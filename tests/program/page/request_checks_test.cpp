#include "page/request_checks.h"

#include <gtest/gtest.h>

#include <set>

namespace fisheye_calibration::program {
namespace {

const Access kLocal = {.host = "127.0.0.1", .port = 8737, .token = ""};
const Access kRemote = {.host = "192.168.1.5", .port = 8737, .token = std::string(64, 'a')};

RequestRecord get(const std::string& path = "/api/state") {
  return {.method = "GET",
          .target = path,
          .path = path,
          .query = {},
          .headers = {{"host", "127.0.0.1:8737"}}};
}

RequestRecord post() {
  RequestRecord request = get("/api/actions");
  request.method = "POST";
  request.headers.emplace("origin", "http://127.0.0.1:8737");
  request.headers.emplace("content-type", "application/json");
  request.headers.emplace("content-length", "20");
  return request;
}

int statusOf(const RequestRecord& request, const Access& access = kLocal) {
  const auto refusal = refusalOf(request, access);
  return refusal ? refusal->status : 200;
}

void set(RequestRecord& request, const std::string& name, const std::string& value) {
  request.headers.erase(name);
  request.headers.emplace(name, value);
}

TEST(RequestChecks, OwnRequestsAreAnswered) {
  EXPECT_EQ(statusOf(get()), 200);
  EXPECT_EQ(statusOf(post()), 200);
  for (const char* host : {"localhost:8737", "[::1]:8737"}) {
    RequestRecord request = post();
    set(request, "host", host);
    set(request, "origin", std::string("http://") + host);
    EXPECT_EQ(statusOf(request), 200) << host;
  }
}

TEST(RequestChecks, OtherHostNamesAreRefusedBecauseTheirOwnersMayPointThemHere) {
  for (const char* host : {"evil.example", "evil.example:8737", "127.0.0.1", "127.0.0.1:80",
                           "127.0.0.1:8737.evil.example", "127.0.0.1.evil.example:8737", "",
                           "localhost:8737:8737", "127.0.0.1:8737 "}) {
    RequestRecord request = get();
    set(request, "host", host);
    EXPECT_EQ(statusOf(request), 403) << host;
  }
  RequestRecord none = get();
  none.headers.erase("host");
  EXPECT_EQ(statusOf(none), 403);
  RequestRecord two = get();
  two.headers.emplace("host", "127.0.0.1:8737");
  EXPECT_EQ(statusOf(two), 403);
}

TEST(RequestChecks, ActionsOfOtherOriginsAreRefused) {
  for (const char* origin :
       {"http://evil.example", "null", "https://127.0.0.1:8737", "http://127.0.0.1",
        "http://127.0.0.1:8738", "http://localhost:8737", "http://127.0.0.1:8737/", ""}) {
    RequestRecord request = post();
    set(request, "origin", origin);
    EXPECT_EQ(statusOf(request), 403) << origin;
  }
  RequestRecord none = post();
  none.headers.erase("origin");
  EXPECT_EQ(statusOf(none), 403);
}

TEST(RequestChecks, WhatTheBrowserCallsAnotherSiteIsRefused) {
  for (const char* site : {"cross-site", "same-site"}) {
    RequestRecord picture = get("/frames/0/raw.jpg");
    set(picture, "sec-fetch-site", site);
    EXPECT_EQ(statusOf(picture), 403) << site;
    RequestRecord action = post();
    set(action, "sec-fetch-site", site);
    EXPECT_EQ(statusOf(action), 403) << site;
  }
  RequestRecord typed = get("/");
  set(typed, "sec-fetch-site", "none");
  EXPECT_EQ(statusOf(typed), 200);
  RequestRecord typedAction = post();
  set(typedAction, "sec-fetch-site", "none");
  EXPECT_EQ(statusOf(typedAction), 403);
}

TEST(RequestChecks, BodiesAreShortJsonWithTheirLength) {
  RequestRecord form = post();
  set(form, "content-type", "text/plain");
  EXPECT_EQ(statusOf(form), 415);
  RequestRecord endless = post();
  endless.headers.emplace("transfer-encoding", "chunked");
  EXPECT_EQ(statusOf(endless), 400);
  RequestRecord packed = post();
  packed.headers.emplace("content-encoding", "gzip");
  EXPECT_EQ(statusOf(packed), 400);
  for (const char* length : {"16385", "99999999999999999999"}) {
    RequestRecord large = post();
    set(large, "content-length", length);
    EXPECT_EQ(statusOf(large), 413) << length;
  }
  for (const char* length : {"", "-1", "1e3", "0x10"}) {
    RequestRecord odd = post();
    set(odd, "content-length", length);
    EXPECT_EQ(statusOf(odd), 400) << length;
  }
  RequestRecord largest = post();
  set(largest, "content-length", "16384");
  EXPECT_EQ(statusOf(largest), 200);
  RequestRecord smuggled = get();
  smuggled.headers.emplace("content-length", "5");
  EXPECT_EQ(statusOf(smuggled), 400);
}

TEST(RequestChecks, PartsAreNotSent) {
  RequestRecord request = get();
  request.headers.emplace("range", "bytes=0-,0-,0-");
  EXPECT_EQ(statusOf(request), 400);
}

TEST(RequestChecks, ThePrintedAddressIsAlwaysAnswered) {
  RequestRecord request = get();
  set(request, "host", "127.0.0.2:8737");
  EXPECT_EQ(statusOf(request), 403);
  EXPECT_FALSE(refusalOf(request, {.host = "127.0.0.2", .port = 8737, .token = ""}));
  set(request, "host", "127.0.0.1");
  EXPECT_EQ(statusOf(request), 403);
  EXPECT_FALSE(refusalOf(request, {.host = "127.0.0.1", .port = 80, .token = ""}));
  set(request, "host", "127.0.0.1:81");
  EXPECT_TRUE(refusalOf(request, {.host = "127.0.0.1", .port = 80, .token = ""}));
}

TEST(RequestChecks, OtherMethodsAndLongRequestsAreRefused) {
  for (const char* method : {"PUT", "DELETE", "OPTIONS", "HEAD", "PATCH", "TRACE"}) {
    RequestRecord request = get();
    request.method = method;
    EXPECT_EQ(statusOf(request), 405) << method;
  }
  RequestRecord path = get();
  path.target = std::string(2049, 'x');
  EXPECT_EQ(statusOf(path), 413);
  RequestRecord header = get();
  header.headers.emplace("x", std::string(17000, 'x'));
  EXPECT_EQ(statusOf(header), 413);
}

RequestRecord remote() {
  RequestRecord request = get();
  set(request, "host", "192.168.1.5:8737");
  return request;
}

TEST(RequestChecks, OffTheLoopbackNothingIsAnsweredWithoutTheToken) {
  EXPECT_EQ(statusOf(remote(), kRemote), 403);
  RequestRecord wrong = remote();
  wrong.headers.emplace("cookie", "fisheye-calibration-8737=" + std::string(64, 'b'));
  EXPECT_EQ(statusOf(wrong, kRemote), 403);
  RequestRecord shorter = remote();
  shorter.headers.emplace("cookie", "fisheye-calibration-8737=" + std::string(63, 'a'));
  EXPECT_EQ(statusOf(shorter, kRemote), 403);
  RequestRecord right = remote();
  right.headers.emplace("cookie", "a=b; fisheye-calibration-8737=" + kRemote.token + "; c=d");
  EXPECT_EQ(statusOf(right, kRemote), 200);
  RequestRecord named = right;
  set(named, "host", "evil.example:8737");
  EXPECT_EQ(statusOf(named, kRemote), 403);
}

TEST(RequestChecks, TheAddressBringsTheTokenOnlyToThePageItself) {
  RequestRecord request = remote();
  request.path = "/";
  request.query.emplace("token", kRemote.token);
  EXPECT_TRUE(bringsToken(request, kRemote));
  EXPECT_EQ(statusOf(request, kRemote), 200);
  request.path = "/api/state";
  EXPECT_FALSE(bringsToken(request, kRemote));
  EXPECT_EQ(statusOf(request, kRemote), 403);
  request.path = "/";
  request.query.emplace("token", "x");
  EXPECT_FALSE(bringsToken(request, kRemote));
  RequestRecord local = get("/");
  local.query.emplace("token", "");
  EXPECT_FALSE(bringsToken(local, kLocal));
}

TEST(RequestChecks, ListeningEverywhereAnswersAddressesButNoNames) {
  Access everywhere = kRemote;
  everywhere.host = "0.0.0.0";
  RequestRecord request = remote();
  request.headers.emplace("cookie", "fisheye-calibration-8737=" + kRemote.token);
  for (const char* host : {"10.0.0.7:8737", "[fe80::1]:8737"}) {
    set(request, "host", host);
    EXPECT_EQ(statusOf(request, everywhere), 200) << host;
  }
  set(request, "host", "evil.example:8737");
  EXPECT_EQ(statusOf(request, everywhere), 403);
}

TEST(RequestChecks, TokensHave256RandomBits) {
  std::set<std::string> tokens;
  std::set<char> digits;
  for (int i = 0; i < 50; ++i) {
    const std::string token = newToken();
    EXPECT_EQ(token.size(), 64U);
    EXPECT_EQ(token.find_first_not_of("0123456789abcdef"), std::string::npos);
    tokens.insert(token);
    digits.insert(token.begin(), token.end());
  }
  EXPECT_EQ(tokens.size(), 50U);
  EXPECT_EQ(digits.size(), 16U);
}

TEST(RequestChecks, LoopbackIsKnownByItsAddresses) {
  for (const char* host : {"127.0.0.1", "127.1.2.3", "::1", "localhost"}) {
    EXPECT_TRUE(isLoopback(host)) << host;
  }
  for (const char* host :
       {"0.0.0.0", "::", "192.168.1.5", "127.evil.example", "127.0.0.1.example"}) {
    EXPECT_FALSE(isLoopback(host)) << host;
  }
}

}  // namespace
}  // namespace fisheye_calibration::program
