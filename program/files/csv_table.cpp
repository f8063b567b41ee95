#include "files/csv_table.h"

#include <algorithm>
#include <utility>

#include "base/failure.h"
#include "base/text.h"
#include "files/csv_dialect.h"

namespace fisheye_calibration::program {
namespace {

// Characters, not bytes: continuation bytes of UTF-8 do not count.
int characters(std::string_view text) {
  return static_cast<int>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

CsvRow splitRow(const std::string& name, std::string_view line, int lineNumber, char separator) {
  CsvRow row{lineNumber, {}};
  bool closed = true;
  for (CsvValue& value : splitLine(line, separator, closed)) {
    const int column = characters(line.substr(0, value.begin)) + 1;
    row.fields.push_back({std::move(value.text), column});
  }
  if (!closed) {
    failBadInput(located(name, lineNumber, 1, "a quotation mark is not closed"));
  }
  return row;
}

bool isNumber(const CsvField& field) {
  return parseNumber(field.text).has_value() || hasDecimalComma(field.text);
}

bool hasDecimalPoint(const CsvField& field) {
  return field.text.find('.') != std::string::npos && parseNumber(field.text).has_value();
}

bool isSurelyDecimal(const CsvField& field) {
  return hasDecimalComma(field.text) && !mayGroupThousands(field.text);
}

const char* separatorName(char separator) {
  return separator == ';' ? "semicolons" : separator == '\t' ? "tabs" : "commas";
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
  const bool decimals = table.separator == ',' && found > expected &&
                        std::all_of(row.fields.begin(), row.fields.end(), isNumber);
  failBadInput(located(
      table.name, row.line, where.column,
      std::to_string(found) + (found == 1 ? " value" : " values") + " where the header names " +
          std::to_string(expected) +
          (decimals ? "; if decimals follow commas, separate the values by semicolons" : "")));
}

// Takes the first line of values for the header. A line of numbers is none: then the names are
// those of `columns`, if there are as many values.
void takeHeader(CsvTable& table, CsvRow first, const std::vector<std::string>& columns) {
  const std::size_t count = first.fields.size();
  if (!std::all_of(first.fields.begin(), first.fields.end(), isNumber)) {
    table.header = std::move(first);
    checkHeader(table);
    return;
  }
  if (count != columns.size()) {
    const std::string names = columns.empty() ? "the names of the columns" : joined(columns, ",");
    failBadInput(located(table.name, first.line, 1,
                         "no header but " + std::to_string(count) + " numbers, separated by " +
                             separatorName(table.separator) + "; write " + names + " above them"));
  }
  table.header.line = first.line;
  for (std::size_t i = 0; i < count; ++i) {
    table.header.fields.push_back({columns[i], first.fields[i].column});
  }
  table.rows.push_back(std::move(first));
}

// Spreadsheets name the separator in a first line of its own: "sep=;".
bool namesSeparator(std::string_view line, char& separator) {
  line.remove_suffix(line.ends_with('\r') ? 1 : 0);
  if (line.size() != 5 || !equalIgnoringCase(line.substr(0, 4), "sep=")) {
    return false;
  }
  separator = line[4];
  return true;
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
    std::vector<std::string> names;
    for (const CsvField& field : header.fields) {
      names.push_back(field.text);
    }
    failBadInput(located(name, header.line, 1,
                         "the header has no column " + inQuotes(columnName) +
                             ", but, separated by " + separatorName(separator) + ", " +
                             inQuotes(joined(names, ", "))));
  }
  return *index;
}

float CsvTable::floatAt(const CsvRow& row, std::size_t field) const {
  const CsvField& value = row.fields[field];
  std::string text = value.text;
  std::string hint;
  if (hasDecimalComma(text)) {
    // Where other numbers have points, or nothing shows that commas are no points, one may group
    // thousands.
    if (separator != ',' && !decimalPoints && decimalCommas) {
      std::replace(text.begin(), text.end(), ',', '.');
    } else if (separator != ',' && !decimalPoints) {
      hint = "; the comma may stand for a decimal point or group thousands";
    } else {
      hint = decimalPoints ? "; other numbers have decimal points" : "; decimals follow a point";
    }
  }
  if (const std::optional<float> number = parseFloat(text)) {
    return *number;
  }
  failBadInput(located(
      name, row.line, value.column,
      text.empty() ? "a number is missing" : "not a number: " + inQuotes(value.text) + hint));
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

CsvTable parseCsv(const std::string& name, std::string_view text,
                  const std::vector<std::string>& columns) {
  checkEncoding(name, text);
  if (text.starts_with(kByteOrderMark)) {
    text.remove_prefix(kByteOrderMark.size());
  }
  CsvTable table{.name = name};
  bool separatorNamed = false;
  for (int lineNumber = 1; !text.empty(); ++lineNumber) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (trimmed(line).empty()) {
      continue;
    }
    if (lineNumber == 1 && namesSeparator(line, table.separator)) {
      separatorNamed = true;
      continue;
    }
    if (table.header.line == 0) {
      table.separator = separatorNamed ? table.separator : separatorOf(line);
      takeHeader(table, splitRow(name, line, lineNumber, table.separator), columns);
      continue;
    }
    CsvRow row = splitRow(name, line, lineNumber, table.separator);
    checkLength(table, row);
    table.rows.push_back(std::move(row));
  }
  if (table.header.line == 0) {
    failBadInput(located(name, 1, 1, "the file is empty"));
  }
  for (const CsvRow& row : table.rows) {
    const auto anyField = [&](auto holds) {
      return std::any_of(row.fields.begin(), row.fields.end(), holds);
    };
    table.decimalPoints = table.decimalPoints || anyField(hasDecimalPoint);
    table.decimalCommas = table.decimalCommas || anyField(isSurelyDecimal);
  }
  return table;
}

}  // namespace fisheye_calibration::program
