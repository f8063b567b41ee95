// One section of a parameter file, with the positions that complaints name.
#ifndef HOST_INI_SECTION_H
#define HOST_INI_SECTION_H

#include <string>
#include <string_view>
#include <vector>

namespace host {

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

// The first section of that name; case does not matter.
IniSection readIniSection(std::string_view text, std::string_view sectionName);

// "camera.ini:7:6: fx is not a number", "camera.ini: missing and read as 0: …"
std::vector<std::string> inspectEntries(const std::string& name, const IniSection& section,
                                        const std::vector<std::string>& keys);

}  // namespace host

#endif  // HOST_INI_SECTION_H
