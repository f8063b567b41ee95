#include "files/ini_section.h"

#include <algorithm>
#include <cstddef>
#include <ostream>

#include "base/failure.h"
#include "base/text.h"
#include "files/csv_dialect.h"
#include "files/csv_table.h"

namespace fisheye_calibration::program {
namespace {

bool isSectionHeader(std::string_view line, std::string_view& name) {
  line = trimmed(line);
  const std::size_t end = line.find(']');
  if (!line.starts_with('[') || end == std::string_view::npos) {
    return false;
  }
  name = trimmed(line.substr(1, end - 1));
  return true;
}

std::string_view withoutQuotes(std::string_view value) {
  const bool quoted = value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
                      value.back() == value.front();
  return quoted ? trimmed(value.substr(1, value.size() - 2)) : value;
}

const char* commaHint(std::string_view value) {
  return hasDecimalComma(value) ? "; decimals follow a point, not a comma" : "";
}

}  // namespace

IniSection readIniSection(std::string_view text, std::string_view sectionName) {
  IniSection section;
  bool inside = false;
  for (int lineNumber = 1; !text.empty(); ++lineNumber) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    const std::string_view line = text.substr(0, end);
    const bool pairOfEnds = text.substr(end).starts_with("\r\n");
    text.remove_prefix(std::min(end + (pairOfEnds ? 2 : 1), text.size()));
    std::string_view name;
    if (isSectionHeader(line, name)) {
      if (inside) {
        break;
      }
      inside = !section.found && equalIgnoringCase(name, sectionName);
      section.found = section.found || inside;
      continue;
    }
    const std::size_t equals = line.find('=');
    if (!inside || equals == std::string_view::npos) {
      continue;
    }
    const std::string_view value = trimmed(line.substr(equals + 1));
    const std::size_t column =
        value.empty() ? equals + 1 : static_cast<std::size_t>(value.data() - line.data());
    section.entries.push_back({std::string(trimmed(line.substr(0, equals))), std::string(value),
                               lineNumber, static_cast<int>(column) + 1});
  }
  return section;
}

IniSection requireIniSection(const std::string& name, std::string_view text,
                             const std::string& sectionName, const std::string& wanted) {
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
    failBadInput(name + ": UTF-16 text; save the file as UTF-8 without a byte-order mark");
  }
  if (text.find('\0') != std::string_view::npos) {
    failBadInput(name + ": not a text file");
  }
  IniSection section = readIniSection(text, sectionName);
  if (section.found) {
    return section;
  }
  if (text.starts_with(kByteOrderMark) &&
      readIniSection(text.substr(kByteOrderMark.size()), sectionName).found) {
    failBadInput(name + ": a byte-order mark precedes [" + sectionName +
                 "], which the library does not find then; save the file as UTF-8 without it");
  }
  failBadInput(name + ": not " + wanted + ", there is no section [" + sectionName + "] in it");
}

std::vector<std::string> inspectEntries(const std::string& name, const IniSection& section,
                                        const std::vector<std::string>& keys) {
  std::vector<std::string> complaints;
  std::vector<std::string> missing;
  for (const std::string& key : keys) {
    const auto entry =
        std::find_if(section.entries.begin(), section.entries.end(),
                     [&](const IniEntry& e) { return equalIgnoringCase(e.key, key); });
    if (entry == section.entries.end()) {
      missing.emplace_back(key);
    } else if (const std::string_view value = withoutQuotes(entry->value); !parseNumber(value)) {
      complaints.push_back(
          located(name, entry->line, entry->column,
                  key + " is not a number: " + inQuotes(entry->value) + commaHint(value)));
    }
  }
  if (!missing.empty()) {
    complaints.push_back(name + ": missing and read as 0: " + joined(missing, ", "));
  }
  return complaints;
}

void reportImpossible(const std::vector<std::string>& complaints, const std::string& name,
                      bool force, std::ostream& messages) {
  for (const std::string& complaint : complaints) {
    messages << (force ? "warning: " : "") << complaint << "\n";
  }
  if (!complaints.empty() && !force) {
    failBadInput(name + ": not used, because of what is impossible in it (--force uses it)");
  }
}

}  // namespace fisheye_calibration::program
