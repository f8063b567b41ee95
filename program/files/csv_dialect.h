// How a file of comma-separated values is written: spreadsheets of different countries separate
// values by commas, semicolons or tabs and decimals by points or commas.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace fisheye_calibration::program {

struct CsvValue {
  std::string text;       // without quotation marks and the blanks around it
  std::size_t begin = 0;  // of the text in the line, bytes
};

// The separator of the values in the line, outside quotation marks: a semicolon if there is one,
// otherwise a tab if there is one, but not next to a comma or the end, where it is a blank;
// otherwise a comma.
char separatorOf(std::string_view line);

// A value in double quotation marks may contain the separator, and "" for a quotation mark.
// `closed` is set to whether every quotation mark has its counterpart.
std::vector<CsvValue> splitLine(std::string_view line, char separator, bool& closed);

// True for a number with one comma in place of the decimal point.
bool hasDecimalComma(std::string_view value);

// True if that comma may group thousands instead, as in "1,200".
bool mayGroupThousands(std::string_view value);

}  // namespace fisheye_calibration::program
