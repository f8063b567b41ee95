#pragma once

#include <string>
#include <vector>

namespace bench {

// `value` with a fixed number of decimals.
std::string fixed(double value, int decimals);

// A number of bytes in KB with one decimal; "-" if it is unknown (negative).
std::string kilobytes(long bytes);

// A table on standard output that prints each row as soon as it is known. Columns are as wide as
// their titles; the first is aligned to the left, the others to the right.
class Table {
 public:
  explicit Table(std::vector<std::string> titles);

  void add(const std::vector<std::string>& cells) const;

 private:
  std::vector<std::string> titles_;
};

}  // namespace bench
