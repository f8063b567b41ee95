// What main() knows about a command.
#pragma once

#include <functional>
#include <iosfwd>

namespace CLI {
class App;
}

namespace fisheye_calibration::program {

struct Streams {
  std::istream& in;
  std::ostream& out;       // results
  std::ostream& messages;  // warnings, progress and errors
};

struct Command {
  const CLI::App* arguments;               // parsed() if the user named the command
  std::function<int(const Streams&)> run;  // carries it out and returns the exit code
};

}  // namespace fisheye_calibration::program
