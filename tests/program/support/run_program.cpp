#include "program/support/run_program.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#if !defined(_WIN32)
#include <sys/wait.h>
#endif

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

std::string quoted(const std::string& argument) {
#if defined(_WIN32)
  return "\"" + argument + "\"";
#else
  std::string text = "'";
  for (const char c : argument) {
    if (c == '\'') {
      text += "'\\'";
    }
    text += c;
  }
  text += '\'';
  return text;
#endif
}

int exitCodeOf(int status) {
#if defined(_WIN32)
  return status;
#else
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
}

// What a program printed, with line ends of one kind: on Windows its output ends lines in CR LF.
std::string printed(const std::string& path) {
  std::string text = contents(path);
#if defined(_WIN32)
  for (std::size_t at = 0; (at = text.find("\r\n", at)) != std::string::npos;) {
    text.erase(at, 1);
  }
#endif
  return text;
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
  std::random_device random;
  do {
    folder_ = fs::temp_directory_path() / ("fisheye-program-test-" + std::to_string(random()));
  } while (!fs::create_directory(folder_));
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

std::string TemporaryFolder::write(const std::string& name, const std::string& text) const {
  std::ofstream file(folder_ / name, std::ios::binary);
  file << text;
  if (!file.flush()) {
    throw std::runtime_error("cannot write " + path(name));
  }
  return path(name);
}

std::vector<std::string> TemporaryFolder::names() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder_)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool exists(const std::string& path) { return fs::exists(path); }

Outcome runProgram(const std::vector<std::string>& arguments, const std::string& input) {
  const TemporaryFolder folder;
  const std::string in = folder.write("in", input);
  std::string command = quoted(FISHEYE_CALIBRATION_PROGRAM);
  for (const std::string& argument : arguments) {
    command += ' ';
    command += quoted(argument);
  }
  command +=
      " <" + quoted(in) + " >" + quoted(folder.path("out")) + " 2>" + quoted(folder.path("err"));
#if defined(_WIN32)
  command = "\"" + command + "\"";
#endif
  const int status = std::system(command.c_str());
  return {exitCodeOf(status), printed(folder.path("out")), printed(folder.path("err"))};
}

}  // namespace fisheye_calibration::program
