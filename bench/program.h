// What all benchmarks have in common: their options, the file of their ratios and the exit code.
#pragma once

#include <functional>
#include <string>

#include "ratios.h"

namespace bench {

class Report {
 public:
  explicit Report(bool large) : large_(large) {}

  bool large() const { return large_; }  // whether pictures that take long are wanted, too

  void add(const std::string& subject, Better better, const std::string& instructionSet,
           double ratio);

  const std::map<std::string, Ratio>& ratios() const { return ratios_; }

 private:
  bool large_;
  std::map<std::string, Ratio> ratios_;
};

// Runs `benchmark` with one thread. It adds its ratios to the report and returns false if a result
// is not the plain derivation's. Returns the exit code: 1 for such a result, 2 for bad usage.
//   --json FILE   writes the ratios
//   --large       see Report
int runBenchmark(int argc, char** argv, const std::string& name,
                 const std::function<bool(Report&)>& benchmark);

}  // namespace bench
