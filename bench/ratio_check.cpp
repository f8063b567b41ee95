#include "ratio_check.h"

#include <array>
#include <cstdio>
#include <map>
#include <set>

namespace bench {
namespace {

// Benchmark, subject, instruction set.
using Name = std::array<std::string, 3>;

struct Value {
  Better better;
  double value;
};

std::map<Name, Value> flat(const Ratios& ratios) {
  std::map<Name, Value> values;
  for (const auto& [benchmark, subjects] : ratios) {
    for (const auto& [subject, ratio] : subjects) {
      for (const auto& [set, value] : ratio.byInstructionSet) {
        values[{benchmark, subject, set}] = {ratio.better, value};
      }
    }
  }
  return values;
}

std::set<std::string> partsOf(const std::map<Name, Value>& values, std::size_t part) {
  std::set<std::string> parts;
  for (const auto& [name, value] : values) {
    parts.insert(name[part]);
  }
  return parts;
}

std::string textOf(const Name& name) { return name[0] + ": " + name[1] + ", " + name[2]; }

std::string lossText(const Name& name, double stored, double measured, double loss) {
  char numbers[160];
  std::snprintf(numbers, sizeof numbers, ": %.3g instead of %.3g, a loss of %.1f %%", measured,
                stored, 100 * loss);
  return textOf(name) + numbers;
}

// Lines for the ratios of `some` that `others` lacks. Benchmarks and instruction sets that `others`
// lacks altogether get one line each.
std::vector<std::string> onlyIn(const std::map<Name, Value>& some,
                                const std::map<Name, Value>& others, const std::string& place) {
  const std::set<std::string> benchmarks = partsOf(others, 0);
  const std::set<std::string> sets = partsOf(others, 2);
  std::map<std::string, int> groups;
  std::vector<std::string> lines;
  for (const auto& [name, value] : some) {
    if (!benchmarks.contains(name[0])) {
      ++groups["benchmark " + name[0]];
    } else if (!sets.contains(name[2])) {
      ++groups["instruction set " + name[2]];
    } else if (!others.contains(name)) {
      lines.push_back("only " + place + ": " + textOf(name));
    }
  }
  for (const auto& [group, count] : groups) {
    lines.push_back("only " + place + ": " + group + " (ratios: " + std::to_string(count) + ")");
  }
  return lines;
}

}  // namespace

double lossOf(Better better, double stored, double measured) {
  return better == Better::kHigher ? 1 - measured / stored : measured / stored - 1;
}

RatioCheck checkRatios(const Ratios& stored, const Ratios& measured, double tolerance) {
  const std::map<Name, Value> before = flat(stored);
  const std::map<Name, Value> now = flat(measured);
  RatioCheck check;
  for (const auto& [name, value] : now) {
    const auto found = before.find(name);
    if (found == before.end()) {
      continue;
    }
    ++check.compared;
    const double loss = lossOf(found->second.better, found->second.value, value.value);
    if (!(loss <= tolerance)) {
      check.losses.push_back(lossText(name, found->second.value, value.value, loss));
    }
  }
  check.skipped = onlyIn(before, now, "in the table");
  for (const std::string& line : onlyIn(now, before, "measured")) {
    check.skipped.push_back(line);
  }
  return check;
}

}  // namespace bench
