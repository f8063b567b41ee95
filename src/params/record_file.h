// Stores a record in a section of a profile file, one key per field. All parameter files share this
// writer and reader; a table of fields defines each file.
#pragma once

#include <array>
#include <cstdint>
#include <new>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "platform/number_text.h"
#include "platform/profile_file.h"

namespace fisheye_calibration::params {

// How the text of a field is read back. Existing hosts depend on each of these.
enum class Reading {
  kExact,           // in the precision of the field
  kThroughFloat,    // a 64-bit field rounded to 32-bit float (compatibility 9)
  kThroughInteger,  // a floating-point field truncated to a whole number (compatibility 10)
  kSkipped,         // written but not read
};

// Written with six decimals (32-bit float, compatibility 8), with fifteen (64-bit float) or as a
// whole number.
template <typename Record>
struct Field {
  const char* key;
  std::variant<float Record::*, double Record::*, std::int32_t Record::*> member;
  Reading reading = Reading::kExact;
};

inline std::string fieldText(float value) { return platform::fixedText(value, 6); }
inline std::string fieldText(double value) { return platform::fixedText(value, 15); }
inline std::string fieldText(std::int32_t value) { return std::to_string(value); }

// Empty text, also that of a missing key, gives 0, and so does text that is no number
// (compatibility 11).
template <typename Value>
Value fieldValue(const std::string& text, Reading reading) {
  if constexpr (std::is_integral_v<Value>) {
    return platform::parseInteger(text);
  } else {
    switch (reading) {
      case Reading::kThroughInteger:
        return static_cast<Value>(platform::parseInteger(text));
      case Reading::kThroughFloat:
        return static_cast<float>(platform::parseReal(text));
      default:
        return static_cast<Value>(platform::parseReal(text));
    }
  }
}

// Returns false if the file cannot be written.
template <typename Record, std::size_t Count>
bool saveRecord(const platform::ProfilePath& path, const char* section,
                const std::array<Field<Record>, Count>& fields, const Record& record) try {
  std::vector<platform::ProfileEntry> entries;
  entries.reserve(Count);
  for (const Field<Record>& field : fields) {
    entries.push_back({field.key, std::visit([&](auto member) { return fieldText(record.*member); },
                                             field.member)});
  }
  return platform::writeProfileValues(path, section, entries);
} catch (const std::bad_alloc&) {
  return false;  // like any file that cannot be written, it stays unchanged
}

// Returns false if the file has none of the keys, or only without values.
template <typename Record, std::size_t Count>
bool loadRecord(const platform::ProfilePath& path, const char* section,
                const std::array<Field<Record>, Count>& fields, Record& record) try {
  for (const Field<Record>& field : fields) {
    std::visit([&](auto member) { record.*member = 0; }, field.member);
  }
  std::vector<const char*> keys;
  keys.reserve(Count);
  for (const Field<Record>& field : fields) {
    if (field.reading != Reading::kSkipped) {
      keys.push_back(field.key);
    }
  }
  const std::vector<std::string> texts = platform::readProfileValues(path, section, keys);
  auto text = texts.begin();
  bool isAnyThere = false;
  for (const Field<Record>& field : fields) {
    if (field.reading == Reading::kSkipped) {
      continue;
    }
    const auto store = [&](auto member) {
      using Value = std::remove_reference_t<decltype(record.*member)>;
      record.*member = fieldValue<Value>(*text, field.reading);
    };
    std::visit(store, field.member);
    isAnyThere = isAnyThere || !text->empty();
    ++text;
  }
  return isAnyThere;
} catch (const std::bad_alloc&) {
  return false;  // as for any file that cannot be read, the fields are 0
}

}  // namespace fisheye_calibration::params
