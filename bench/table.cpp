#include "table.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <utility>

namespace bench {

std::string fixed(double value, int decimals) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

std::string kilobytes(long bytes) {
  return bytes < 0 ? "-" : fixed(static_cast<double>(bytes) / 1024, 1);
}

Table::Table(std::vector<std::string> titles) : titles_(std::move(titles)) { add(titles_); }

void Table::add(const std::vector<std::string>& cells) const {
  std::string line;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::string padding(titles_[i].size() - std::min(titles_[i].size(), cells[i].size()),
                              ' ');
    line += i == 0 ? cells[i] + padding : "  " + padding + cells[i];
  }
  std::puts(line.c_str());
  std::fflush(stdout);
}

}  // namespace bench
