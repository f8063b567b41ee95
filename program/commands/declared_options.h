// Declares a command's options and arguments. Only the source behind this header, and main(),
// include the headers of the library that parses them: these take longer to compile than a command.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace fisheye_calibration::program {

CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& description);

// The text below the list of the options in the command's help.
void setFooter(CLI::App& command, const std::string& text);

// The names of the options that the user has given ("--grid").
std::vector<std::string> givenOptions(const CLI::App& command);

// An option ("--grid", "-o,--output") or a positional argument ("image").
class DeclaredOption {
 public:
  explicit DeclaredOption(CLI::Option* option) : option_(option) {}

  // What the help calls the value.
  DeclaredOption typeName(const std::string& name) const;

  DeclaredOption required() const;

  // The help shows the value that the variable has now.
  DeclaredOption showDefault() const;

  // The option may be given without a value, and then has this one.
  DeclaredOption orWithoutValue(const std::string& value) const;

  // An option for a list takes one value each time it is given, instead of all that follow.
  DeclaredOption oneValueEachTime() const;

 private:
  CLI::Option* option_;
};

// The variables must live until the command line has been parsed.
DeclaredOption addOption(CLI::App& command, const std::string& name, std::string& value,
                         const std::string& description);
DeclaredOption addOption(CLI::App& command, const std::string& name,
                         std::vector<std::string>& values, const std::string& description);

// A file or a folder, or several.
DeclaredOption addPath(CLI::App& command, const std::string& name, std::filesystem::path& path,
                       const std::string& description);
DeclaredOption addPaths(CLI::App& command, const std::string& name,
                        std::vector<std::filesystem::path>& paths, const std::string& description);

// One of some words, each of which stands for a number.
DeclaredOption addChoice(CLI::App& command, const std::string& name,
                         const std::map<std::string, int>& choices,
                         const std::function<void(int)>& choose, const std::string& description);

// True if it is given.
void addFlag(CLI::App& command, const std::string& name, bool& value,
             const std::string& description);

// --force: use parameter files in which something is impossible.
void addForce(CLI::App& command, bool& force);

}  // namespace fisheye_calibration::program
