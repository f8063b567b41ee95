// What the synthetic examples do with their cameras.
#pragma once

#include <string>
#include <vector>

#include "synthetic_bed.h"

struct SyntheticCamera {
  std::string side;   // the word that selects it on the command line; empty if it is the only one
  std::string title;  // for people
  KnownCamera camera;
};

struct SyntheticExample {
  std::string name;   // of the program
  std::string usage;  // the arguments that follow the name
  Bed bed;
  std::vector<SyntheticCamera> cameras;
};

// Carries the command line out and returns the exit code: 0 done, 1 failed, 2 bad usage.
int runExample(const SyntheticExample& example, int argumentCount, char** arguments);
