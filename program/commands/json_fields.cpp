#include "commands/json_fields.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/failure.h"
#include "base/text.h"

namespace fisheye_calibration::program {
namespace {

using Json = nlohmann::ordered_json;

constexpr double kLargest = 1e6;

bool isNumber(const Json& value) {
  return value.is_number() && std::abs(value.get<double>()) <= kLargest;
}

}  // namespace

JsonFields::JsonFields(const Json& object, std::string place)
    : object_(object), place_(std::move(place)) {
  if (!object_.is_object()) {
    failBadInput(place_ + (place_.ends_with(":") ? "" : ":") +
                 " give an object with its fields in braces");
  }
}

std::string JsonFields::placeOf(const std::string& key) const {
  return place_ + (place_.ends_with(":") ? " " : ".") + key;
}

void JsonFields::allowOnly(std::initializer_list<const char*> keys) const {
  const std::vector<std::string> known(keys.begin(), keys.end());
  for (const auto& [key, value] : object_.items()) {
    if (std::find(known.begin(), known.end(), key) == known.end()) {
      failBadInput(placeOf(shortened(key)) + ": unknown; there are " + joined(known, ", "));
    }
  }
}

const Json& JsonFields::value(const char* key) const {
  const auto found = object_.find(key);
  if (found == object_.end()) {
    failBadInput(placeOf(key) + ": missing");
  }
  return *found;
}

double JsonFields::number(const char* key) const {
  const Json& found = value(key);
  if (!isNumber(found)) {
    failBadInput(placeOf(key) + ": give a number of at most a million");
  }
  return found.get<double>();
}

double JsonFields::numberOr(const char* key, double otherwise) const {
  return has(key) ? number(key) : otherwise;
}

double JsonFields::positive(const char* key) const {
  const double found = number(key);
  if (!(found > 0)) {
    failBadInput(placeOf(key) + ": give a number greater than 0");
  }
  return found;
}

double JsonFields::notNegative(const char* key, double otherwise) const {
  const double found = numberOr(key, otherwise);
  if (!(found >= 0)) {
    failBadInput(placeOf(key) + ": give a number from 0");
  }
  return found;
}

double JsonFields::share(const char* key, double otherwise) const {
  const double found = numberOr(key, otherwise);
  if (!(found >= 0 && found <= 1)) {
    failBadInput(placeOf(key) + ": give a number from 0 to 1");
  }
  return found;
}

int JsonFields::whole(const char* key, int least, int most) const {
  const Json& found = value(key);
  if (!found.is_number_integer() || found.get<double>() < least || found.get<double>() > most) {
    failBadInput(placeOf(key) + ": give a whole number from " + std::to_string(least) + " to " +
                 std::to_string(most));
  }
  return found.get<int>();
}

std::string JsonFields::text(const char* key) const {
  const Json& found = value(key);
  if (!found.is_string()) {
    failBadInput(placeOf(key) + ": give a text in quotation marks");
  }
  return found.get<std::string>();
}

std::vector<double> JsonFields::numbers(const char* key, std::size_t count) const {
  const Json& found = value(key);
  if (!found.is_array() || found.size() != count ||
      !std::all_of(found.begin(), found.end(), isNumber)) {
    failBadInput(placeOf(key) + ": give a list of " + std::to_string(count) +
                 " numbers of at most a million");
  }
  return found.get<std::vector<double>>();
}

JsonFields JsonFields::fields(const char* key) const { return {value(key), placeOf(key)}; }

std::vector<JsonFields> JsonFields::list(const char* key) const {
  const Json& found = value(key);
  if (!found.is_array() || found.empty()) {
    failBadInput(placeOf(key) + ": give a list with at least one entry");
  }
  std::vector<JsonFields> entries;
  for (std::size_t i = 0; i < found.size(); ++i) {
    entries.emplace_back(found[i], placeOf(key) + "[" + std::to_string(i) + "]");
  }
  return entries;
}

}  // namespace fisheye_calibration::program
