// Results of one system, as a text that another system's can be compared with.
#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace agreement {

class Results {
 public:
  // Bytes that must be the same on all systems; the text keeps their count and a digest.
  void addExact(const std::string& name, const void* bytes, std::size_t count);

  // Numbers that may differ by `tolerance`, absolutely up to 1 and relatively above.
  void addNear(const std::string& name, double tolerance, std::span<const double> numbers);

  // One line a result: "name exact <count> <digest>" or "name near <tolerance> <number> ...".
  [[nodiscard]] std::string text() const;

 private:
  std::string lines_;
};

// The differences between two such texts, a sentence each; empty if they agree. Results that only
// one of the texts has count as differences, and so do texts without any result.
std::vector<std::string> differences(const std::string& first, const std::string& second);

}  // namespace agreement
