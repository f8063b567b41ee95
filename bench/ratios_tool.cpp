// Joins the files of ratios that the benchmarks write, and compares them with a stored table:
//   fisheye_calibration_ratios join FILE PART...
//   fisheye_calibration_ratios check TABLE PART...   exit code 1 if a ratio is lost
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "ratio_check.h"
#include "ratios.h"

namespace {

constexpr double kTolerance = 0.15;
constexpr int kBadInput = 2;

bench::RatioFile joined(const std::vector<std::string>& parts) {
  bench::RatioFile all = bench::readRatios(parts.front());
  for (const std::string& part : parts) {
    bench::addRatios(all.ratios, bench::readRatios(part).ratios);
  }
  return all;
}

void noteIfDifferent(const char* what, const std::string& stored, const std::string& measured) {
  if (stored != measured) {
    std::printf("note: the table's %s is %s, this one %s\n", what, stored.c_str(),
                measured.c_str());
  }
}

int check(const bench::RatioFile& stored, const bench::RatioFile& measured) {
  noteIfDifferent("processor", stored.machine.cpu, measured.machine.cpu);
  noteIfDifferent("compiler", stored.machine.compiler, measured.machine.compiler);
  noteIfDifferent("image library", stored.machine.imageLibrary, measured.machine.imageLibrary);
  const bench::RatioCheck result = bench::checkRatios(stored.ratios, measured.ratios, kTolerance);
  for (const std::string& line : result.skipped) {
    std::printf("skipped, %s\n", line.c_str());
  }
  for (const std::string& line : result.losses) {
    std::printf("LOST %s\n", line.c_str());
  }
  std::printf("ratios compared: %zu, lost: %zu\n", result.compared, result.losses.size());
  if (result.compared == 0) {
    std::fprintf(stderr, "The table and the run have no ratio in common.\n");
  }
  return result.compared > 0 && result.losses.empty() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Joins and compares ratios measured by the benchmarks");
  app.require_subcommand(1);
  std::string file;
  std::vector<std::string> parts;
  CLI::App* const join = app.add_subcommand("join", "joins parts into a file");
  CLI::App* const compare = app.add_subcommand("check", "compares parts with a stored file");
  for (CLI::App* const command : {join, compare}) {
    command->add_option("file", file)->required();
    command->add_option("parts", parts)->required();
  }
  CLI11_PARSE(app, argc, argv);
  try {
    if (*compare) {
      return check(bench::readRatios(file), joined(parts));
    }
    bench::writeRatios(file, joined(parts));
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return kBadInput;
  }
}
