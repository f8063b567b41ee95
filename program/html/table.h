// Tables of numbers in HTML.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace fisheye_calibration::program {

struct Cell {
  std::string text;
  std::optional<double> value = std::nullopt;  // unrounded; written beside the text, and sorted by
};

struct Column {
  std::string heading;
  bool number = false;  // aligned by its end
};

struct Table {
  std::string caption;
  std::vector<Column> columns;
  std::vector<std::vector<Cell>> rows;  // the first cell names the row
  std::string name = {};                // for programs that read the page
  bool sortable = false;                // a script may put a button into each heading
};

// A number with so many decimals; "-" if it is not finite.
Cell numberCell(double value, int decimals);

std::string tableMarkup(const Table& table);

}  // namespace fisheye_calibration::program
