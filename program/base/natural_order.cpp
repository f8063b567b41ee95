#include "base/natural_order.h"

#include <algorithm>
#include <cstddef>

namespace fisheye_calibration::program {
namespace {

bool isDigit(char letter) { return letter >= '0' && letter <= '9'; }

// Takes the number at the beginning of the text and returns it without its leading zeros.
std::string_view takeNumber(std::string_view& text) {
  const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
  const auto length = static_cast<std::size_t>(end - text.begin());
  std::string_view number = text.substr(0, length);
  text.remove_prefix(length);
  number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
  return number;
}

// Negative if a < b, positive if a > b; both are without leading zeros.
int compareNumbers(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) {
    return a.size() < b.size() ? -1 : 1;
  }
  return a.compare(b);
}

int compareFirst(std::string_view& a, std::string_view& b) {
  if (isDigit(a.front()) && isDigit(b.front())) {
    return compareNumbers(takeNumber(a), takeNumber(b));
  }
  const int order = a.substr(0, 1).compare(b.substr(0, 1));
  a.remove_prefix(1);
  b.remove_prefix(1);
  return order;
}

}  // namespace

bool naturallyBefore(std::string_view a, std::string_view b) {
  std::string_view restOfA = a;
  std::string_view restOfB = b;
  while (!restOfA.empty() && !restOfB.empty()) {
    if (const int order = compareFirst(restOfA, restOfB); order != 0) {
      return order < 0;
    }
  }
  return restOfA.empty() == restOfB.empty() ? a < b : restOfA.empty();
}

}  // namespace fisheye_calibration::program
