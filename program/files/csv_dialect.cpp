#include "files/csv_dialect.h"

#include <algorithm>

#include "base/text.h"

namespace fisheye_calibration::program {

char separatorOf(std::string_view line) {
  bool quoted = false;
  bool tab = false;         // one between two values
  bool tabPending = false;  // one after a value
  bool afterComma = true;   // or at the start
  for (const char c : line) {
    quoted = quoted != (c == '"');
    if (quoted) {
      continue;
    }
    if (c == ';') {
      return ';';
    }
    if (c == '\t') {
      tabPending = !afterComma;
    } else if (c == ',') {
      afterComma = true;
      tabPending = false;
    } else if (c != ' ' && c != '\r') {
      tab = tab || tabPending;
      tabPending = afterComma = false;
    }
  }
  return tab ? '\t' : ',';
}

std::vector<CsvValue> splitLine(std::string_view line, char separator, bool& closed) {
  std::vector<CsvValue> values;
  bool quoted = false;
  std::size_t start = 0;
  for (std::size_t i = 0; i <= line.size(); ++i) {
    if (i < line.size() && line[i] == '"') {
      quoted = !quoted;
    }
    if (i < line.size() && (quoted || line[i] != separator)) {
      continue;
    }
    const std::string_view raw = line.substr(start, i - start);
    std::string_view text = trimmed(raw);
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
      text = trimmed(text.substr(1, text.size() - 2));
    }
    CsvValue value;
    value.begin = text.empty() ? start : static_cast<std::size_t>(text.data() - line.data());
    for (std::size_t k = 0; k < text.size(); ++k) {
      value.text += text[k];
      k += text.substr(k).starts_with("\"\"") ? 1 : 0;
    }
    values.push_back(value);
    start = i + 1;
  }
  closed = !quoted;
  return values;
}

bool hasDecimalComma(std::string_view value) {
  if (std::count(value.begin(), value.end(), ',') != 1) {
    return false;
  }
  std::string point(value);
  std::replace(point.begin(), point.end(), ',', '.');
  return parseNumber(point).has_value();
}

bool mayGroupThousands(std::string_view value) {
  const bool sign = value.starts_with('-') || value.starts_with('+');
  value.remove_prefix(sign ? 1 : 0);
  const std::size_t comma = value.find(',');
  return hasDecimalComma(value) && comma >= 1 && comma <= 3 && value[0] != '0' &&
         value.size() == comma + 4 && value.find_first_not_of("0123456789,") == std::string::npos;
}

}  // namespace fisheye_calibration::program
