#include "agreement/results.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <sstream>

namespace agreement {
namespace {

// Fowler, Noll and Vo's hash (FNV-1a) in 64 bits.
std::uint64_t digestOf(const void* bytes, std::size_t count) {
  std::uint64_t digest = 0xcbf29ce484222325U;
  const auto* byte = static_cast<const unsigned char*>(bytes);
  for (std::size_t i = 0; i < count; ++i) {
    digest = (digest ^ byte[i]) * 0x100000001b3U;
  }
  return digest;
}

std::string shortest(double number) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof(text), number).ptr};
}

double numberOf(const std::string& text) {
  double number = std::numeric_limits<double>::quiet_NaN();
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

using Words = std::vector<std::string>;

std::map<std::string, Words> readLines(const std::string& text) {
  std::map<std::string, Words> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    std::istringstream words(line);
    std::string name;
    words >> name;
    for (std::string word; words >> word;) lines[name].push_back(word);
  }
  return lines;
}

std::string differenceOfNumbers(const Words& first, const Words& second) {
  const double tolerance = numberOf(first[1]);
  double worst = 0;
  for (std::size_t i = 2; i < first.size(); ++i) {
    const double a = numberOf(first[i]);
    const double b = numberOf(second[i]);
    const double distance = std::abs(a - b) / std::max({1.0, std::abs(a), std::abs(b)});
    if (!(distance <= worst)) worst = distance;  // NaN is the worst
    if (std::isnan(worst)) break;
  }
  return worst <= tolerance ? "" : "differs by " + shortest(worst) + ", allowed " + first[1];
}

std::string differenceOf(const Words& first, const Words& second) {
  const bool numbers = first.size() > 2 && first[0] == "near" && second.size() == first.size() &&
                       std::equal(first.begin(), first.begin() + 2, second.begin());
  if (numbers) return differenceOfNumbers(first, second);
  return first == second ? "" : "is not the same";
}

}  // namespace

void Results::addExact(const std::string& name, const void* bytes, std::size_t count) {
  char digest[17] = {};
  std::to_chars(digest, digest + 16, digestOf(bytes, count), 16);
  lines_ += name + " exact " + std::to_string(count) + ' ' + digest + '\n';
}

void Results::addNear(const std::string& name, double tolerance, std::span<const double> numbers) {
  lines_ += name + " near " + shortest(tolerance);
  for (const double number : numbers) lines_ += ' ' + shortest(number);
  lines_ += '\n';
}

std::string Results::text() const { return lines_; }

std::vector<std::string> differences(const std::string& first, const std::string& second) {
  std::vector<std::string> found;
  const auto ours = readLines(first);
  auto theirs = readLines(second);
  for (const auto& [name, words] : ours) {
    const auto other = theirs.find(name);
    if (other == theirs.end()) {
      found.push_back(name + " is missing in the second text");
      continue;
    }
    const std::string difference = differenceOf(words, other->second);
    if (!difference.empty()) found.push_back(name + " " + difference);
    theirs.erase(other);
  }
  for (const auto& [name, words] : theirs) found.push_back(name + " is missing in the first text");
  if (ours.empty()) found.emplace_back("the first text holds no result");
  return found;
}

}  // namespace agreement
