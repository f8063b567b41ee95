// Runs the built program as a user would.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace fisheye_calibration::program {

// A folder of its own for a test, removed afterwards.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  std::string path(const std::string& name) const { return (folder_ / name).string(); }
  std::string write(const std::string& name, const std::string& text) const;  // gives the path
  std::vector<std::string> names() const;  // of the files, sorted

 private:
  std::filesystem::path folder_;
};

std::string contents(const std::string& path);
bool exists(const std::string& path);

struct Outcome {
  int exitCode;
  std::string out;
  std::string err;
};

Outcome runProgram(const std::vector<std::string>& arguments, const std::string& input = "");

}  // namespace fisheye_calibration::program
