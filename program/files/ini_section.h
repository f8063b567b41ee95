// One section of a parameter file, with the line and column of each value for messages.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace fisheye_calibration::program {

struct IniEntry {
  std::string key;
  std::string value;
  int line;
  int column;  // of the value
};

struct IniSection {
  bool found = false;
  std::vector<IniEntry> entries;
};

// The first section of that name, regardless of case.
IniSection readIniSection(std::string_view text, std::string_view sectionName);

// The same of a file `name`. Fails as bad input if there is no such section, `wanted` being what
// the file should be, and for text in UTF-16 or with a byte-order mark before the section, which
// the library does not read.
IniSection requireIniSection(const std::string& name, std::string_view text,
                             const std::string& sectionName, const std::string& wanted);

// "camera.ini:7:6: fx is not a number", "camera.ini: missing and read as 0: fy, u0"
std::vector<std::string> inspectEntries(const std::string& name, const IniSection& section,
                                        const std::vector<std::string>& keys);

// Reports what makes a file impossible to use: fails as bad input, or with `force` only warns.
void reportImpossible(const std::vector<std::string>& complaints, const std::string& name,
                      bool force, std::ostream& messages);

}  // namespace fisheye_calibration::program
