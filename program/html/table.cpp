#include "html/table.h"

#include <cmath>
#include <cstddef>

#include "base/text.h"
#include "html/markup.h"

namespace fisheye_calibration::program {
namespace {

std::string headMarkup(const Table& table) {
  std::string cells;
  for (const Column& column : table.columns) {
    Attributes attributes = {{"scope", "col"}};
    if (column.number) {
      attributes.emplace_back("class", "number");
    }
    cells += textElement("th", attributes, column.heading);
  }
  return element("thead", {}, element("tr", {}, cells));
}

std::string rowMarkup(const Table& table, const std::vector<Cell>& row) {
  std::string cells;
  for (std::size_t i = 0; i < row.size(); ++i) {
    Attributes attributes;
    if (i == 0) {
      attributes.emplace_back("scope", "row");
    }
    if (i < table.columns.size() && table.columns[i].number) {
      attributes.emplace_back("class", "number");
    }
    if (row[i].value) {
      attributes.emplace_back("data-value", shortest(*row[i].value));
    }
    cells += textElement(i == 0 ? "th" : "td", attributes, row[i].text);
  }
  return element("tr", {}, cells) + "\n";
}

}  // namespace

Cell numberCell(double value, int decimals) {
  if (!std::isfinite(value)) {
    return {"-"};
  }
  return {fixed(value, decimals), value};
}

std::string tableMarkup(const Table& table) {
  std::string rows;
  for (const std::vector<Cell>& row : table.rows) {
    rows += rowMarkup(table, row);
  }
  Attributes attributes;
  if (!table.name.empty()) {
    attributes.emplace_back("data-table", table.name);
  }
  if (table.sortable) {
    attributes.emplace_back("class", "sortable");
  }
  const std::string content = textElement("caption", {}, table.caption) + headMarkup(table) + "\n" +
                              element("tbody", {}, "\n" + rows);
  // A wide table scrolls by itself, also by keyboard.
  return element(
      "div",
      {{"class", "scroll"}, {"role", "region"}, {"aria-label", table.caption}, {"tabindex", "0"}},
      element("table", attributes, content));
}

}  // namespace fisheye_calibration::program
