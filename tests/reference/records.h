// The files that scripts/record-reference writes: what the version of the image library that
// defines this library's pixels computes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace reference {

// A record: its words and, for `name arguments | numbers | numbers`, the text between the bars.
struct Record {
  std::string line;
  std::vector<std::string> words;  // of the first part
  std::vector<std::string> parts;  // the others

  int number(std::size_t word) const;
  const std::string& hash() const { return words.back(); }
};

// The records of records/<name>.txt. Raises std::runtime_error when the file cannot be read or was
// written with another generator.
std::vector<Record> readRecords(std::string_view name);

// The numbers of a part, every bit as they were written.
std::vector<double> numbersOf(std::string_view part);

}  // namespace reference
