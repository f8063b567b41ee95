// Arbitrary profile files, names and values: a written value is read back, everything else stays,
// and reading values as numbers does no harm.
//
// Input: section, key and value, each ended by a line feed, then the file.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "platform/number_text.h"
#include "platform/profile_text.h"

using namespace fisheye_calibration;

namespace {

void require(bool condition) {
  if (!condition) {
    std::abort();
  }
}

std::string_view takeLine(std::string_view& rest) {
  const std::size_t end = rest.find('\n');
  const std::string_view line = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return line;
}

std::string without(std::string_view text, std::string_view unwanted) {
  std::string result;
  for (const char c : text) {
    if (unwanted.find(c) == std::string_view::npos) {
      result.push_back(c);
    }
  }
  return result;
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
    text.remove_prefix(1);
  }
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) {
    text.remove_suffix(1);
  }
  return text;
}

std::string_view unquoted(std::string_view text) {
  for (const char quote : {'"', '\''}) {
    if (text.size() >= 2 && text.front() == quote && text.back() == quote) {
      return text.substr(1, text.size() - 2);
    }
  }
  return text;
}

// Lines including their terminators.
std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    std::size_t length = 0;
    while (length < text.size() && text[length] != '\r' && text[length] != '\n') {
      ++length;
    }
    if (text.substr(length, 2) == "\r\n") {
      length += 2;
    } else if (length < text.size()) {
      ++length;
    }
    lines.push_back(text.substr(0, length));
    text.remove_prefix(length);
  }
  return lines;
}

// Whether `after` is `before` with one line rewritten or one or two lines added.
bool differsInOnePlace(std::string_view before, std::string_view after) {
  const auto old = linesOf(before);
  const auto now = linesOf(after);
  std::size_t front = 0;
  while (front < old.size() && front < now.size() && old[front] == now[front]) {
    ++front;
  }
  std::size_t back = 0;
  while (back < old.size() - front && back < now.size() - front &&
         old[old.size() - 1 - back] == now[now.size() - 1 - back]) {
    ++back;
  }
  const std::size_t removed = old.size() - front - back;
  const std::size_t added = now.size() - front - back;
  return removed <= 1 && added <= 2 && removed <= added;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using platform::profileValue;
  using platform::setProfileValue;
  using namespace std::string_view_literals;

  std::string_view rest(reinterpret_cast<const char*>(data), size);
  const std::string section = without(takeLine(rest), "\r\n]\0"sv);
  const std::string key = without(takeLine(rest), "\r\n=\0"sv);
  const std::string value = without(takeLine(rest), "\r\n\0"sv);
  const std::string before(rest);

  const std::string_view found = profileValue(before, section, key);
  platform::parseReal(found);
  platform::parseInteger(found);
  platform::parseReal(value);
  if (trimmed(key).starts_with('[') || trimmed(key).starts_with(';')) {
    return 0;
  }

  std::string after = before;
  setProfileValue(after, section, key, value);
  require(profileValue(after, section, key) == unquoted(trimmed(value)));
  // An unterminated last line may have been terminated.
  require(differsInOnePlace(before, after) || differsInOnePlace(before + "\r\n", after));

  std::string again = after;
  setProfileValue(again, section, key, value);
  require(again == after);

  const std::string otherKey = key + "x";
  require(profileValue(after, section, otherKey) == profileValue(before, section, otherKey));
  return 0;
}
