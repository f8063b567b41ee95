#include "synthetic_main.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

namespace {

int usage(const SyntheticExample& example) {
  std::cerr << "usage: " << example.name << " " << example.usage << "\n";
  return 2;
}

int compareWithTruth(const SyntheticExample& example, const SyntheticCamera& chosen,
                     const std::string& file) {
  std::printf("%s, noise %.2f px in x and y\n", chosen.title.c_str(), kNoise);
  return compare(file, chosen.camera, example.bed) ? 0 : 1;
}

}  // namespace

int runExample(const SyntheticExample& example, int argumentCount, char** arguments) {
  const std::vector<std::string> words(arguments + 1, arguments + argumentCount);
  if (words.size() == 1 && words[0] == "size") {
    const KnownCamera& camera = example.cameras[0].camera;
    std::cout << camera.width << "x" << camera.height << "\n";
    return 0;
  }
  const bool hasSides = !example.cameras[0].side.empty();
  if (words.size() != (hasSides ? 3u : 2u)) {
    return usage(example);
  }
  const std::string side = hasSides ? words[1] : "";
  const auto chosen =
      std::find_if(example.cameras.begin(), example.cameras.end(),
                   [&](const SyntheticCamera& camera) { return camera.side == side; });
  if (chosen == example.cameras.end()) {
    return usage(example);
  }
  const std::string& file = words.back();
  if (words[0] == "compare") {
    return compareWithTruth(example, *chosen, file);
  }
  if (words[0] != "points" && words[0] != "frame") {
    return usage(example);
  }
  const bool written = words[0] == "points" ? writePoints(file, chosen->camera, example.bed)
                                            : writeFrame(file, chosen->camera, example.bed);
  if (!written) {
    std::cerr << example.name << ": cannot write " << file << "\n";
  }
  return written ? 0 : 1;
}
