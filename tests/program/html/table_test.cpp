#include "html/table.h"

#include <gtest/gtest.h>

#include <cmath>

namespace fisheye_calibration::program {
namespace {

TEST(Table, HoldsTextAndUnroundedNumbers) {
  const Table table{.caption = "A & B",
                    .columns = {{"Name"}, {"Value", true}},
                    .rows = {{{"<x>"}, numberCell(0.123456789, 2)}, {{"y"}, numberCell(NAN, 2)}},
                    .name = "sample",
                    .sortable = true};
  EXPECT_EQ(tableMarkup(table),
            "<div class=\"scroll\" role=\"region\" aria-label=\"A &amp; B\" tabindex=\"0\">"
            "<table data-table=\"sample\" class=\"sortable\"><caption>A &amp; B</caption>"
            "<thead><tr><th scope=\"col\">Name</th><th scope=\"col\" class=\"number\">Value</th>"
            "</tr></thead>\n<tbody>\n"
            "<tr><th scope=\"row\">&lt;x&gt;</th>"
            "<td class=\"number\" data-value=\"0.123456789\">0.12</td></tr>\n"
            "<tr><th scope=\"row\">y</th><td class=\"number\">-</td></tr>\n"
            "</tbody></table></div>");
}

}  // namespace
}  // namespace fisheye_calibration::program
