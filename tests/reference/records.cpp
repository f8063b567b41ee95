#include "reference/records.h"

#include <charconv>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "reference/generator.h"

namespace reference {
namespace {

std::vector<std::string> wordsOf(std::string_view text) {
  std::istringstream stream{std::string(text)};
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

Record recordOf(const std::string& line) {
  Record record;
  record.line = line;
  std::istringstream stream(line);
  std::string part;
  std::getline(stream, part, '|');
  record.words = wordsOf(part);
  while (std::getline(stream, part, '|')) record.parts.push_back(part);
  return record;
}

template <class Number>
Number numberOf(const std::string& word) {
  Number value{};
  const char* const end = word.data() + word.size();
  const auto [rest, error] = std::from_chars(word.data(), end, value);
  if (error != std::errc() || rest != end) throw std::runtime_error("not a number: " + word);
  return value;
}

}  // namespace

int Record::number(std::size_t word) const { return numberOf<int>(words.at(word)); }

std::vector<Record> readRecords(std::string_view name) {
  const std::string path = std::string(FISHEYE_CALIBRATION_RECORDS "/").append(name).append(".txt");
  std::ifstream file(path);
  std::vector<Record> records;
  bool generator = false;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line.front() == '#') continue;
    if (line == "generator " + std::to_string(kGeneratorVersion)) {
      generator = true;
    } else {
      records.push_back(recordOf(line));
    }
  }
  if (!generator) throw std::runtime_error(path + " is missing or of another generator");
  return records;
}

std::vector<double> numbersOf(std::string_view part) {
  std::vector<double> numbers;
  for (const std::string& word : wordsOf(part)) numbers.push_back(numberOf<double>(word));
  return numbers;
}

}  // namespace reference
