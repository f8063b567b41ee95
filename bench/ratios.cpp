#include "ratios.h"

#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace bench {
namespace {

using Json = nlohmann::json;

constexpr double kPrecision = 1000;  // three decimals; a run repeats fewer

Json jsonOf(const Ratio& ratio) {
  Json values = Json::object();
  for (const auto& [set, value] : ratio.byInstructionSet) {
    values[set] = std::round(value * kPrecision) / kPrecision;
  }
  return {{"better", ratio.better == Better::kHigher ? "higher" : "lower"}, {"values", values}};
}

Ratio ratioOf(const Json& json) {
  Ratio ratio;
  const auto better = json.at("better").get<std::string>();
  if (better != "higher" && better != "lower") {
    throw std::runtime_error("\"better\" is neither \"higher\" nor \"lower\"");
  }
  ratio.better = better == "higher" ? Better::kHigher : Better::kLower;
  for (const auto& [set, value] : json.at("values").items()) {
    ratio.byInstructionSet[set] = value.get<double>();
  }
  return ratio;
}

RatioFile fileOf(const Json& json) {
  RatioFile file;
  file.machine = {json.at("cpu"), json.at("compiler"), json.at("date"), json.at("library"),
                  json.at("image_library")};
  for (const auto& [benchmark, subjects] : json.at("ratios").items()) {
    for (const auto& [subject, ratio] : subjects.items()) {
      file.ratios[benchmark][subject] = ratioOf(ratio);
    }
  }
  return file;
}

}  // namespace

RatioFile readRatios(const std::string& path) {
  std::ifstream stream(path);
  if (!stream) {
    throw std::runtime_error(path + " cannot be read");
  }
  try {
    return fileOf(Json::parse(stream));
  } catch (const std::exception& error) {
    throw std::runtime_error(path + " is no table of ratios: " + error.what());
  }
}

void writeRatios(const std::string& path, const RatioFile& file) {
  const Machine& machine = file.machine;
  Json json = {{"cpu", machine.cpu},
               {"compiler", machine.compiler},
               {"date", machine.date},
               {"library", machine.library},
               {"image_library", machine.imageLibrary},
               {"ratios", Json::object()}};
  for (const auto& [benchmark, subjects] : file.ratios) {
    for (const auto& [subject, ratio] : subjects) {
      json["ratios"][benchmark][subject] = jsonOf(ratio);
    }
  }
  std::ofstream stream(path);
  stream << json.dump(2) << '\n';
  if (!stream.flush()) {
    throw std::runtime_error(path + " cannot be written");
  }
}

void addRatios(Ratios& ratios, const Ratios& others) {
  for (const auto& [benchmark, subjects] : others) {
    for (const auto& [subject, ratio] : subjects) {
      ratios[benchmark][subject] = ratio;
    }
  }
}

}  // namespace bench
