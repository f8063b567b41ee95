#include "program.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <exception>
#include <fstream>
#include <opencv2/core/utility.hpp>
#include <opencv2/core/version.hpp>

namespace bench {
namespace {

constexpr int kDiffers = 1;
constexpr int kBadUsage = 2;

std::string processorName() {
  std::ifstream stream("/proc/cpuinfo");
  for (std::string line; std::getline(stream, line);) {
    const std::size_t colon = line.find(": ");
    if (line.rfind("model name", 0) == 0 && colon != std::string::npos) {
      return line.substr(colon + 2);
    }
  }
  return "unknown";
}

std::string today() {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  char text[16];
  std::strftime(text, sizeof text, "%Y-%m-%d", std::gmtime(&now));
  return text;
}

Machine thisMachine() {
  return {processorName(), FISHEYE_CALIBRATION_COMPILER, today(), FISHEYE_CALIBRATION_VERSION,
          CV_VERSION};
}

}  // namespace

void Report::add(const std::string& subject, Better better, const std::string& instructionSet,
                 double ratio) {
  Ratio& entry = ratios_[subject];
  entry.better = better;
  entry.byInstructionSet[instructionSet] = ratio;
}

int runBenchmark(int argc, char** argv, const std::string& name,
                 const std::function<bool(Report&)>& benchmark) {
  CLI::App app("Benchmark " + name);
  std::string json;
  bool large = false;
  app.add_option("--json", json, "file for the ratios");
  app.add_flag("--large", large, "pictures that take long, too");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kBadUsage;
  }
  cv::setNumThreads(1);
  Report report(large);
  try {
    if (!benchmark(report)) {
      std::fprintf(stderr, "%s: a result is not that of the plain derivation\n", name.c_str());
      return kDiffers;
    }
    if (!json.empty()) {
      writeRatios(json, {thisMachine(), {{name, report.ratios()}}});
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", name.c_str(), error.what());
    return kBadUsage;
  }
  return 0;
}

}  // namespace bench
