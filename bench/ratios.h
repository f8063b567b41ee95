// The measured ratios and their file. Times vary between machines; ratios of times measured in one
// run vary less, so that a stored table shows whether a change made the library slower.
#pragma once

#include <map>
#include <string>

namespace bench {

enum class Better { kHigher, kLower };

struct Ratio {
  Better better = Better::kHigher;
  std::map<std::string, double> byInstructionSet;
};

// By benchmark, then by what was compared, for example "1280 x 960, 8 bits, plain/ours".
using Ratios = std::map<std::string, std::map<std::string, Ratio>>;

struct Machine {
  std::string cpu;
  std::string compiler;
  std::string date;          // of the run, year-month-day
  std::string library;       // its version
  std::string imageLibrary;  // likewise
};

struct RatioFile {
  Machine machine;
  Ratios ratios;
};

// JSON. Reading throws std::runtime_error, with the file's name, for a file that cannot be read or
// is none of these; writing does for a file that cannot be written.
RatioFile readRatios(const std::string& path);
void writeRatios(const std::string& path, const RatioFile& file);

// Adds the other's ratios; equal ones are replaced.
void addRatios(Ratios& ratios, const Ratios& others);

}  // namespace bench
