// Computes the same things on every system, to compare the results.
//   fisheye_calibration_agreement write FOLDER       results.txt, camera.ini and dual.ini
//   fisheye_calibration_agreement read FOLDER FILE   to FILE: what camera.ini and dual.ini say
//   fisheye_calibration_agreement compare FILE FILE  prints the differences; exit code 1 if there
//   are any
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "agreement/computations.h"

namespace {

std::string bytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void writeText(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

void addFile(agreement::Results& results, const std::string& name, const std::string& path) {
  const std::string bytes = bytesOf(path);
  results.addExact(name, bytes.data(), bytes.size());
}

void write(const std::string& folder) {
  const std::string camera = folder + "/camera.ini";
  const std::string dual = folder + "/dual.ini";
  // Each twice: into a new file, and over the existing one.
  for (int i = 0; i < 2; ++i) {
    SaveCalibrationParam(camera.c_str(), agreement::sampleCamera());
    SaveDualCamerasCalibrationParam(dual.c_str(), agreement::sampleDual());
  }
  agreement::Results results;
  addFile(results, "file.camera", camera);
  addFile(results, "file.dual", dual);
  agreement::addMaps(results);
  agreement::addPictures(results);
  agreement::addStitchedPictures(results);
  agreement::addConversions(results);
  agreement::addSolver(results);
  agreement::addRegistration(results);
  writeText(folder + "/results.txt", results.text());
}

void read(const std::string& folder, const std::string& path) {
  FishEyeCalibrationParam camera{};
  DualFishEyeCalibrationParam dual{};
  LoadCalibrationParam((folder + "/camera.ini").c_str(), camera);
  LoadDualCamerasCalibrationParam((folder + "/dual.ini").c_str(), dual);
  if (camera.fx == 0 || dual.Pixel == 0) throw std::runtime_error("no records in " + folder);
  agreement::Results results;
  agreement::addRecord(results, "camera", camera);
  agreement::addRecord(results, "dual", dual);
  writeText(path, results.text());
}

int compare(const std::string& first, const std::string& second) {
  const auto differences = agreement::differences(bytesOf(first), bytesOf(second));
  for (const std::string& difference : differences) std::printf("%s\n", difference.c_str());
  return differences.empty() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.size() == 2 && words[0] == "write") {
      write(words[1]);
    } else if (words.size() == 3 && words[0] == "read") {
      read(words[1], words[2]);
    } else if (words.size() == 3 && words[0] == "compare") {
      return compare(words[1], words[2]);
    } else {
      std::fputs("write FOLDER | read FOLDER FILE | compare FILE FILE\n", stderr);
      return 2;
    }
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  }
}
