// Comma-separated text with a header line, in the dialects of csv_dialect.h. Every value has its
// line and column for messages.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fisheye_calibration::program {

struct CsvField {
  std::string text;  // without the blanks around it
  int column;        // of its first character, from 1
};

struct CsvRow {
  int line;  // from 1
  std::vector<CsvField> fields;
};

struct CsvTable {
  std::string name;  // of the file, for messages
  CsvRow header = {.line = 0, .fields = {}};
  std::vector<CsvRow> rows = {};  // each with as many fields as the header
  char separator = ',';
  bool decimalPoints = false;  // some number has one, so that a comma in another is none
  bool decimalCommas = false;  // some number has a comma that cannot group thousands

  // The index of the column with that name (regardless of case), if there is one.
  std::optional<std::size_t> find(std::string_view columnName) const;
  // The same; fails as bad input if there is none.
  std::size_t require(std::string_view columnName) const;

  float floatAt(const CsvRow& row, std::size_t field) const;
  int integerAt(const CsvRow& row, std::size_t field) const;
};

// "name:line:column: message"
std::string located(const std::string& name, int line, int column, const std::string& message);

// Accepts a UTF-8 byte-order mark, CRLF line ends, blank lines and blanks around values. If the
// first line holds as many numbers as there are `columns`, these are the names. Fails as bad input,
// naming line and column, for an empty file, for other numbers in place of a header, for a column
// name that occurs twice and for rows that are not as long as the header.
CsvTable parseCsv(const std::string& name, std::string_view text,
                  const std::vector<std::string>& columns = {});

}  // namespace fisheye_calibration::program
