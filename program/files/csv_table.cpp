#include "files/csv_table.h"

#include <algorithm>
#include <utility>

#include "base/failure.h"
#include "base/text.h"

namespace fisheye_calibration::program {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Characters, not bytes: continuation bytes of UTF-8 do not count.
int characters(std::string_view text) {
  return static_cast<int>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

CsvRow splitRow(std::string_view line, int lineNumber) {
  CsvRow row{lineNumber, {}};
  std::size_t start = 0;
  while (true) {
    const std::size_t comma = std::min(line.find(',', start), line.size());
    const std::string_view raw = line.substr(start, comma - start);
    const std::string_view value = trimmed(raw);
    const std::size_t lead =
        value.empty() ? 0 : static_cast<std::size_t>(value.data() - raw.data());
    row.fields.push_back({std::string(value), characters(line.substr(0, start + lead)) + 1});
    if (comma == line.size()) {
      return row;
    }
    start = comma + 1;
  }
}

void checkEncoding(const std::string& name, std::string_view text) {
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
    failBadInput(located(name, 1, 1, "UTF-16 text; save the file as UTF-8"));
  }
  if (text.find('\0') != std::string_view::npos) {
    failBadInput(located(name, 1, 1, "not a text file"));
  }
}

void checkHeader(const CsvTable& table) {
  const std::vector<CsvField>& names = table.header.fields;
  for (std::size_t i = 0; i < names.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (!names[i].text.empty() && equalIgnoringCase(names[i].text, names[j].text)) {
        failBadInput(located(table.name, table.header.line, names[i].column,
                             "column " + inQuotes(names[i].text) + " is there twice"));
      }
    }
  }
}

void checkLength(const CsvTable& table, const CsvRow& row) {
  const std::size_t expected = table.header.fields.size();
  const std::size_t found = row.fields.size();
  if (found == expected) {
    return;
  }
  const CsvField& where = found > expected ? row.fields[expected] : row.fields.back();
  failBadInput(located(table.name, row.line, where.column,
                       std::to_string(found) + (found == 1 ? " value" : " values") +
                           " where the header names " + std::to_string(expected)));
}

}  // namespace

std::string located(const std::string& name, int line, int column, const std::string& message) {
  return name + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " + message;
}

std::optional<std::size_t> CsvTable::find(std::string_view columnName) const {
  for (std::size_t i = 0; i < header.fields.size(); ++i) {
    if (equalIgnoringCase(header.fields[i].text, columnName)) {
      return i;
    }
  }
  return std::nullopt;
}

std::size_t CsvTable::require(std::string_view columnName) const {
  const std::optional<std::size_t> index = find(columnName);
  if (!index) {
    failBadInput(located(name, header.line, 1, "the header has no column " + inQuotes(columnName)));
  }
  return *index;
}

float CsvTable::floatAt(const CsvRow& row, std::size_t field) const {
  const CsvField& value = row.fields[field];
  if (const std::optional<float> number = parseFloat(value.text)) {
    return *number;
  }
  failBadInput(located(
      name, row.line, value.column,
      value.text.empty() ? "a number is missing" : "not a number: " + inQuotes(value.text)));
}

int CsvTable::integerAt(const CsvRow& row, std::size_t field) const {
  const CsvField& value = row.fields[field];
  if (const std::optional<int> number = parseInteger(value.text)) {
    return *number;
  }
  failBadInput(located(name, row.line, value.column,
                       value.text.empty() ? "a whole number is missing"
                                          : "not a whole number: " + inQuotes(value.text)));
}

CsvTable parseCsv(const std::string& name, std::string_view text) {
  checkEncoding(name, text);
  if (text.starts_with(kByteOrderMark)) {
    text.remove_prefix(kByteOrderMark.size());
  }
  CsvTable table{name, {0, {}}, {}};
  for (int lineNumber = 1; !text.empty(); ++lineNumber) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (trimmed(line).empty()) {
      continue;
    }
    CsvRow row = splitRow(line, lineNumber);
    if (table.header.line == 0) {
      table.header = std::move(row);
      checkHeader(table);
    } else {
      checkLength(table, row);
      table.rows.push_back(std::move(row));
    }
  }
  if (table.header.line == 0) {
    failBadInput(located(name, 1, 1, "the file is empty"));
  }
  return table;
}

}  // namespace fisheye_calibration::program
