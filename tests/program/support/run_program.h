// Runs the built program as a user would.
#pragma once

#include <string>
#include <vector>

#include "support/temporary_folder.h"

namespace fisheye_calibration::program {

struct Outcome {
  int exitCode;
  std::string out;
  std::string err;
};

Outcome runProgram(const std::vector<std::string>& arguments, const std::string& input = "");

// Writes a file in the folder and returns its path.
std::string writeFile(const support::TemporaryFolder& folder, const std::string& name,
                      const std::string& text);

// Names of the files in the folder, sorted.
std::vector<std::string> namesIn(const support::TemporaryFolder& folder);

}  // namespace fisheye_calibration::program
