#include "program/support/run_program.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#if !defined(_WIN32)
#include <sys/wait.h>
#endif

namespace fisheye_calibration::program {
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

bool isThere(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::exists(path, ignored);
}

// What a program printed, with LF line ends: on Windows they are CR LF.
std::string printed(const std::string& path) {
  std::string text = support::bytesOf(path);
#if defined(_WIN32)
  for (std::size_t at = 0; (at = text.find("\r\n", at)) != std::string::npos;) {
    text.erase(at, 1);
  }
#endif
  return text;
}

}  // namespace

Outcome runProgram(const std::vector<std::string>& arguments, const std::string& input) {
  const support::TemporaryFolder folder;
  const std::string in = writeFile(folder, "in", input);
  std::string command = quoted(FISHEYE_CALIBRATION_PROGRAM);
  for (const std::string& argument : arguments) {
    command += ' ';
    command += quoted(argument);
  }
  command +=
      " <" + quoted(in) + " >" + quoted(folder.file("out")) + " 2>" + quoted(folder.file("err"));
#if defined(_WIN32)
  command = "\"" + command + "\"";
#endif
  int status = std::system(command.c_str());
  // The system cannot always start a command interpreter at once, so busy as tests make it. One
  // that has been started makes the files.
  for (int tried = 1; status == -1 && tried < 3 && !isThere(folder.file("err")); ++tried) {
    status = std::system(command.c_str());
  }
  return {.exitCode = exitCodeOf(status),
          .out = printed(folder.file("out")),
          .err = printed(folder.file("err"))};
}

std::string writeFile(const support::TemporaryFolder& folder, const std::string& name,
                      const std::string& text) {
  support::writeBytes(folder.file(name), text);
  return folder.file(name);
}

std::vector<std::string> namesIn(const support::TemporaryFolder& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace fisheye_calibration::program
