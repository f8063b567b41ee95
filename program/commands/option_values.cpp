#include "commands/option_values.h"

#include <CLI/CLI.hpp>
#include <optional>
#include <string_view>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"

namespace fisheye_calibration::program {
namespace {

[[noreturn]] void failOption(const std::string& option, const std::string& wanted,
                             const std::string& text) {
  failBadInput(option + ": " + wanted + ", not " + inQuotes(text));
}

}  // namespace

CLI::Option* addPath(CLI::App& command, const std::string& name, std::filesystem::path& path,
                     const std::string& description) {
  const auto assign = [&path](const std::string& text) { path = pathOf(text); };
  return command.add_option_function<std::string>(name, assign, description);
}

CLI::Option* addPaths(CLI::App& command, const std::string& name,
                      std::vector<std::filesystem::path>& paths, const std::string& description) {
  const auto assign = [&paths](const std::vector<std::string>& texts) {
    paths.clear();
    for (const std::string& text : texts) {
      paths.push_back(pathOf(text));
    }
  };
  return command.add_option_function<std::vector<std::string>>(name, assign, description);
}

CLI::Option* addForce(CLI::App& command, bool& force) {
  return command.add_flag("--force", force,
                          "use a parameter file that is impossible or made for another size");
}

Size parseSize(const std::string& option, const std::string& text, int smallest, int largest) {
  const std::size_t cross = text.find_first_of("xX");
  if (cross != std::string::npos) {
    const std::optional<int> width = parseInteger(std::string_view(text).substr(0, cross));
    const std::optional<int> height = parseInteger(std::string_view(text).substr(cross + 1));
    const auto inRange = [&](int side) { return side >= smallest && side <= largest; };
    if (width && height && inRange(*width) && inRange(*height)) {
      return {.width = *width, .height = *height};
    }
  }
  failOption(option,
             "give two numbers from " + std::to_string(smallest) + " to " +
                 std::to_string(largest) + " as WIDTHxHEIGHT",
             text);
}

Size parseImageSize(const std::string& option, const std::string& text) {
  return parseSize(option, text, 1, kLargestImageSide);
}

Pair parsePair(const std::string& option, const std::string& text) {
  const std::size_t comma = text.find(',');
  if (comma != std::string::npos) {
    const std::optional<float> first = parseFloat(trimmed(std::string_view(text).substr(0, comma)));
    const std::optional<float> second =
        parseFloat(trimmed(std::string_view(text).substr(comma + 1)));
    if (first && second) {
      return {.first = *first, .second = *second};
    }
  }
  failOption(option, "give two numbers as X,Y", text);
}

float parsePositive(const std::string& option, const std::string& text) {
  const std::optional<float> value = parseFloat(trimmed(text));
  if (value && *value > 0) {
    return *value;
  }
  failOption(option, "give a number greater than 0", text);
}

}  // namespace fisheye_calibration::program
