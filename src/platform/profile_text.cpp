#include "platform/profile_text.h"

#include <algorithm>
#include <optional>

namespace fisheye_calibration::platform {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// A line as offsets into the text: [begin, end) without its line end; the next line is at `next`.
struct Line {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t next = 0;
};

struct KeyLine {
  Line line;
  std::string_view key;
  std::string_view value;
};

struct Place {
  bool sectionFound = false;
  std::size_t insertionPoint = 0;  // where the missing key or section goes
  std::optional<KeyLine> keyLine;
};

Line lineAt(std::string_view text, std::size_t begin) {
  const std::size_t end = std::min(text.find_first_of(kLineEnd, begin), text.size());
  const std::size_t endLength = text.substr(end, 2) == kLineEnd ? 2 : 1;
  return {begin, end, std::min(end + endLength, text.size())};
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool sameName(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, lower, lower);
}

// The name of the section that the line opens; std::nullopt if it opens none.
std::optional<std::string_view> sectionName(std::string_view line) {
  const std::string_view content = trimmed(line);
  const std::size_t close = content.find(']');
  if (!content.starts_with('[') || close == std::string_view::npos) {
    return std::nullopt;
  }
  return trimmed(content.substr(1, close - 1));
}

std::optional<KeyLine> splitKeyLine(std::string_view text, const Line& line) {
  const std::string_view content = text.substr(line.begin, line.end - line.begin);
  const std::size_t equals = content.find('=');
  if (equals == std::string_view::npos) {
    return std::nullopt;
  }
  return KeyLine{line, trimmed(content.substr(0, equals)), content.substr(equals + 1)};
}

// `section` and `key` are trimmed.
Place find(std::string_view text, std::string_view section, std::string_view key) {
  Place place;
  Line line;
  for (std::size_t at = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
       at < text.size(); at = line.next) {
    line = lineAt(text, at);
    const std::string_view content = text.substr(line.begin, line.end - line.begin);
    if (const auto name = sectionName(content)) {
      if (place.sectionFound) {
        break;  // later sections of the same name are ignored
      }
      place.sectionFound = sameName(*name, section);
    } else if (place.sectionFound) {
      const auto keyLine = splitKeyLine(text, line);
      if (keyLine && sameName(keyLine->key, key)) {
        place.keyLine = keyLine;
        return place;
      }
    }
    if (!trimmed(content).empty()) {
      place.insertionPoint = line.next;
    }
  }
  if (!place.sectionFound) {
    place.insertionPoint = text.size();
  }
  return place;
}

}  // namespace

std::string_view profileValue(std::string_view text, std::string_view section,
                              std::string_view key) {
  const Place place = find(text, trimmed(section), trimmed(key));
  if (!place.keyLine) {
    return {};
  }
  const std::string_view whole = place.keyLine->value;
  std::string_view value = trimmed(whole.substr(0, whole.find('\0')));
  const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                      (value.front() == '"' || value.front() == '\'');
  return quoted ? value.substr(1, value.size() - 2) : value;
}

void setProfileValue(std::string& text, std::string_view section, std::string_view key,
                     std::string_view value) {
  const Place place = find(text, trimmed(section), trimmed(key));
  std::string added;
  if (!place.keyLine) {
    if (place.insertionPoint > 0 &&
        kLineEnd.find(text[place.insertionPoint - 1]) == std::string_view::npos) {
      added.append(kLineEnd);
    }
    if (!place.sectionFound) {
      added.append("[").append(trimmed(section)).append("]").append(kLineEnd);
    }
  }
  added.append(place.keyLine ? place.keyLine->key : trimmed(key)).append("=");
  added.append(trimmed(value)).append(kLineEnd);
  if (place.keyLine) {
    const Line& old = place.keyLine->line;
    text.replace(old.begin, old.next - old.begin, added);
  } else {
    text.insert(place.insertionPoint, added);
  }
}

}  // namespace fisheye_calibration::platform
