// Reads the fields of an object in JSON. Failures name the file and the place in it.
#pragma once

#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace fisheye_calibration::program {

class JsonFields {
 public:
  // Of an object at `place` in a file, such as "machine.json: cameras[1]".
  JsonFields(const nlohmann::ordered_json& object, std::string place);

  bool has(const char* key) const { return object_.contains(key); }

  // Fails for any other key.
  void allowOnly(std::initializer_list<const char*> keys) const;

  double number(const char* key) const;
  double numberOr(const char* key, double otherwise) const;
  double positive(const char* key) const;
  double notNegative(const char* key, double otherwise) const;
  double share(const char* key, double otherwise) const;  // 0 to 1
  int whole(const char* key, int least, int most) const;
  std::string text(const char* key) const;
  std::vector<double> numbers(const char* key, std::size_t count) const;
  JsonFields fields(const char* key) const;
  std::vector<JsonFields> list(const char* key) const;

  const nlohmann::ordered_json& json() const { return object_; }

  // "machine.json: cameras[1].height"
  std::string placeOf(const std::string& key) const;

 private:
  const nlohmann::ordered_json& value(const char* key) const;

  nlohmann::ordered_json object_;
  std::string place_;
};

}  // namespace fisheye_calibration::program
