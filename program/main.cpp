// fisheye-calibration: lists the commands, runs the one that the user names and reports failures.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <new>
#include <opencv2/core.hpp>
#include <opencv2/core/utils/logger.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/standard_error.h"
#include "base/text.h"
#include "commands/calibrate_command.h"
#include "commands/correct_command.h"
#include "commands/crop_command.h"
#include "commands/detect_command.h"
#include "commands/hand_eye_command.h"
#include "commands/info_command.h"
#include "commands/live_command.h"
#include "commands/map_command.h"
#include "commands/simulate_command.h"
#include "commands/stitch_command.h"
#include "commands/straighten_command.h"
#include "commands/target_command.h"
#include "commands/verify_command.h"

namespace fisheye_calibration::program {
namespace {

constexpr const char* kName = "fisheye-calibration";

constexpr const char* kFooter =
    "Examples:\n"
    "  fisheye-calibration target --charuco 14x9 --bed 600x400 -o board.svg\n"
    "  fisheye-calibration detect photo.png --chessboard 8x6 --spacing 39 -o points.csv\n"
    "  fisheye-calibration calibrate points.csv --image-size 1920x1208 -o camera.ini\n"
    "  fisheye-calibration map --camera camera.ini --from world --to raw 120 -80.5\n"
    "  fisheye-calibration correct --camera camera.ini frame.png -o top.png --grid 50\n"
    "  fisheye-calibration crop top.png --size 1200x800 -o bed.png\n"
    "  fisheye-calibration stitch --left l.png,l.ini,l.csv --right r.png,r.ini,r.csv -o bed.png "
    "--dual dual.ini\n"
    "  fisheye-calibration info camera.ini\n"
    "  fisheye-calibration simulate --camera camera.ini --bed-picture bed.png --bed 0,0,600x400 "
    "-o raw.png\n"
    "  fisheye-calibration live --source /dev/video0 --output machine\n\n"
    "Exit codes: 0 done; 1 the job failed or its result is not to be trusted; 2 bad usage or "
    "input.";

std::vector<Command> addCommands(CLI::App& app) {
  return {addTargetCommand(app),  addDetectCommand(app),  addCalibrateCommand(app),
          addCorrectCommand(app), addCropCommand(app),    addStitchCommand(app),
          addMapCommand(app),     addHandEyeCommand(app), addStraightenCommand(app),
          addInfoCommand(app),    addVerifyCommand(app),  addSimulateCommand(app),
          addLiveCommand(app)};
}

// The image library's errors arrive as exceptions with their text; its own messages would repeat
// it.
int silent(int, const char*, const char*, const char*, int, void*) { return 0; }

int report(const std::string& message, int code) {
  std::cerr << kName << ": " << onOneLine(message) << std::endl;
  return code;
}

// The parser's message with long words cut.
std::string withShortWords(const std::string& message) {
  std::istringstream words(message);
  std::string text;
  for (std::string word; words >> word;) {
    text += (text.empty() ? "" : " ") + shortened(word);
  }
  return text;
}

// The parser reports an unknown command as a missing one.
std::optional<std::string> unknownCommand(const CLI::App& app, int argc, char** argv) {
  const bool known = !app.get_subcommands().empty();
  const auto isOption = [](const std::string& word) { return word.starts_with('-'); };
  const auto first = std::find_if_not(argv + std::min(argc, 1), argv + argc, isOption);
  if (known || first == argv + argc) {
    return std::nullopt;
  }
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(command->get_name());
  }
  const std::optional<std::string> meant = nearest(*first, names);
  return "unknown command " + inQuotes(*first) +
         (meant ? "; did you mean " + *meant + "?" : ", there are " + joined(names, ", "));
}

int run(int argc, char** argv) {
  CLI::App app("Calibrates fisheye cameras over a work bed and converts points with them.");
  app.name(kName);
  app.set_version_flag("--version", std::string(kName) + " " + FISHEYE_CALIBRATION_VERSION);
  app.require_subcommand(1);
  app.footer(kFooter);
  const std::vector<Command> commands = addCommands(app);
  bool quiet = false;
  bool verbose = false;
  for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    command->add_flag("--quiet", quiet, "print errors, warnings and requested values only");
    command->add_flag("--verbose", verbose, "print more: k2 ... k5 of a camera");
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {  // --help, --version
      return app.exit(error);
    }
    const std::string complaint =
        unknownCommand(app, argc, argv).value_or(withShortWords(error.what()));
    return report(complaint + " (--help shows the usage)", kExitBadInput);
  }
  const auto named = std::find_if(commands.begin(), commands.end(), [](const Command& command) {
    return command.arguments->parsed();
  });
  std::ostream nowhere(nullptr);
  return named->run({.in = std::cin,
                     .out = quiet && !named->printsResults ? nowhere : std::cout,
                     .messages = std::cerr,
                     .progress = quiet ? nowhere : std::cerr,
                     .progressBar = !quiet && isErrorTerminal(),
                     .verbose = verbose});
}

// Reports what ended the program early in one line.
int runReporting(int argc, char** argv) {
  cv::redirectError(silent);
  cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
  try {
    const int code = run(argc, argv);
    std::cout.flush();
    return std::cout ? code : report("standard output: cannot write", kExitJobFailed);
  } catch (const Failure& failure) {
    // The message names the file or the option itself; file:line:column starts the line, where
    // editors look for it.
    std::cerr << onOneLine(failure.what()) << std::endl;
    return failure.code();
  } catch (const std::bad_alloc&) {
    return report("not enough memory", kExitJobFailed);
  } catch (const cv::Exception& failure) {
    return report("the image library cannot work on this input (" + failure.err + ")",
                  kExitJobFailed);
  } catch (const std::exception& failure) {
    return report(failure.what(), kExitJobFailed);
  }
}

}  // namespace
}  // namespace fisheye_calibration::program

int main(int argc, char** argv) { return fisheye_calibration::program::runReporting(argc, argv); }
