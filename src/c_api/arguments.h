// Checks of the C interface's arguments. Each check ends the call with FCAL_BAD_ARGUMENT and a text
// that begins with the argument's name.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "c_api/status.h"

namespace fisheye_calibration::c_api {

template <class Value>
Value& required(Value* pointer, std::string_view name) {
  if (pointer == nullptr) {
    refuse(name, "null");
  }
  return *pointer;
}

// Numbers of a point.
constexpr std::size_t kPlane = 2;
constexpr std::size_t kSpace = 3;

// An array of `width` numbers for each of `count` elements. It may be null if it is empty.
template <class Value>
std::span<Value> checkedArray(Value* values, std::int32_t count, std::string_view name,
                              std::size_t width = 1) {
  if (count < 0) {
    refuse(name, "count is negative");
  }
  if (count > 0) {
    required(values, name);
  }
  return {values, static_cast<std::size_t>(count) * width};
}

inline void requirePositive(std::int32_t size, std::string_view name) {
  if (size <= 0) {
    refuse(name, "not positive");
  }
}

// Larger sizes are taken for a field that was never set.
constexpr std::int32_t kLargestRecord = 4096;

// The size that a growing record declares; `first` is that of its first version.
template <class Record>
std::size_t declaredSize(const Record& record, std::size_t first, std::string_view name) {
  if (record.size < static_cast<std::int32_t>(first) || record.size > kLargestRecord) {
    refuse(name, "size is not that of the record");
  }
  return static_cast<std::size_t>(record.size);
}

// Options of any version as those of this one.
template <class Record>
Record readGrowing(const Record* options, std::size_t first, std::string_view name) {
  Record known{};
  if (options == nullptr) {
    return known;
  }
  const std::size_t size = declaredSize(*options, first, name);
  std::memcpy(&known, options, std::min(size, sizeof(Record)));
  const auto* const bytes = reinterpret_cast<const unsigned char*>(options);
  if (size > sizeof(Record) && std::any_of(bytes + sizeof(Record), bytes + size,
                                           [](unsigned char byte) { return byte != 0; })) {
    refuse(name, "an option that this version does not know is set");
  }
  return known;
}

// Fills results of any version, which keep their size.
template <class Record>
void writeGrowing(const Record& known, std::size_t size, Record& result) {
  const std::int32_t declared = result.size;
  std::memcpy(&result, &known, std::min(size, sizeof(Record)));
  if (size > sizeof(Record)) {
    std::memset(reinterpret_cast<unsigned char*>(&result) + sizeof(Record), 0,
                size - sizeof(Record));
  }
  result.size = declared;
}

}  // namespace fisheye_calibration::c_api
