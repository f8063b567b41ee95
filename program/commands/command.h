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
  std::ostream& messages;  // warnings and errors
  std::ostream& progress;  // steps of the work
  bool progressBar;        // there is somebody to watch it
  bool verbose;            // also what hardly anybody needs
};

struct Command {
  const CLI::App* arguments;               // parsed() if the user named the command
  std::function<int(const Streams&)> run;  // carries it out and returns the exit code
  bool printsResults = false;              // what it prints is all that it yields
};

}  // namespace fisheye_calibration::program
