#include "commands/declared_options.h"

#include <CLI/CLI.hpp>

#include "base/file_path.h"

namespace fisheye_calibration::program {

CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& description) {
  return app.add_subcommand(name, description);
}

void setFooter(CLI::App& command, const std::string& text) { command.footer(text); }

std::vector<std::string> givenOptions(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options()) {
    if (option->count() > 0) {
      names.push_back(option->get_name());
    }
  }
  return names;
}

DeclaredOption DeclaredOption::typeName(const std::string& name) const {
  return DeclaredOption(option_->type_name(name));
}

DeclaredOption DeclaredOption::required() const { return DeclaredOption(option_->required()); }

DeclaredOption DeclaredOption::showDefault() const {
  return DeclaredOption(option_->capture_default_str());
}

DeclaredOption DeclaredOption::orWithoutValue(const std::string& value) const {
  return DeclaredOption(option_->expected(0, 1)->default_str(value));
}

DeclaredOption DeclaredOption::oneValueEachTime() const {
  return DeclaredOption(option_->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll));
}

DeclaredOption addOption(CLI::App& command, const std::string& name, std::string& value,
                         const std::string& description) {
  return DeclaredOption(command.add_option(name, value, description));
}

DeclaredOption addOption(CLI::App& command, const std::string& name,
                         std::vector<std::string>& values, const std::string& description) {
  return DeclaredOption(command.add_option(name, values, description));
}

DeclaredOption addPath(CLI::App& command, const std::string& name, std::filesystem::path& path,
                       const std::string& description) {
  const auto assign = [&path](const std::string& text) { path = pathOf(text); };
  return DeclaredOption(command.add_option_function<std::string>(name, assign, description));
}

DeclaredOption addPaths(CLI::App& command, const std::string& name,
                        std::vector<std::filesystem::path>& paths, const std::string& description) {
  const auto assign = [&paths](const std::vector<std::string>& texts) {
    paths.clear();
    for (const std::string& text : texts) {
      paths.push_back(pathOf(text));
    }
  };
  return DeclaredOption(
      command.add_option_function<std::vector<std::string>>(name, assign, description));
}

DeclaredOption addChoice(CLI::App& command, const std::string& name,
                         const std::map<std::string, int>& choices,
                         const std::function<void(int)>& choose, const std::string& description) {
  return DeclaredOption(command.add_option_function<int>(name, choose, description)
                            ->transform(CLI::CheckedTransformer(choices)));
}

void addFlag(CLI::App& command, const std::string& name, bool& value,
             const std::string& description) {
  command.add_flag(name, value, description);
}

void addForce(CLI::App& command, bool& force) {
  addFlag(command, "--force", force,
          "use a parameter file that is impossible or made for another size");
}

}  // namespace fisheye_calibration::program
