#include "camera_file.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <system_error>

#include "csv_table.h"
#include "failure.h"
#include "record_fields.h"
#include "text.h"

namespace host {
namespace {

constexpr std::string_view sectionName = "CalibraionParam";  // the file format's own spelling

struct Entry {
  std::string key;
  std::string value;
  int line;
  int column;  // of the value
};

struct Section {
  bool found = false;
  std::vector<Entry> entries;
};

bool isSectionHeader(std::string_view line, std::string_view& name) {
  line = trimmed(line);
  const std::size_t end = line.find(']');
  if (!line.starts_with('[') || end == std::string_view::npos) return false;
  name = trimmed(line.substr(1, end - 1));
  return true;
}

Section readSection(std::string_view text) {
  Section section;
  bool inside = false;
  for (int lineNumber = 1; !text.empty(); ++lineNumber) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    const std::string_view line = text.substr(0, end);
    const bool pairOfEnds = text.substr(end).starts_with("\r\n");
    text.remove_prefix(std::min(end + (pairOfEnds ? 2 : 1), text.size()));
    std::string_view name;
    if (isSectionHeader(line, name)) {
      if (inside) break;
      inside = !section.found && equalIgnoringCase(name, sectionName);
      section.found = section.found || inside;
      continue;
    }
    const std::size_t equals = line.find('=');
    if (!inside || equals == std::string_view::npos) continue;
    const std::string_view value = trimmed(line.substr(equals + 1));
    const std::size_t column =
        value.empty() ? equals + 1 : static_cast<std::size_t>(value.data() - line.data());
    section.entries.push_back({std::string(trimmed(line.substr(0, equals))), std::string(value),
                               lineNumber, static_cast<int>(column) + 1});
  }
  return section;
}

std::string_view withoutQuotes(std::string_view value) {
  const bool quoted = value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
                      value.back() == value.front();
  return quoted ? trimmed(value.substr(1, value.size() - 2)) : value;
}

}  // namespace

std::vector<std::string> inspectCameraText(const std::string& name, std::string_view text) {
  const Section section = readSection(text);
  if (!section.found) {
    failBadInput(name + ": not a camera file, there is no section [" + std::string(sectionName) +
                 "] in it");
  }
  std::vector<std::string> complaints;
  std::vector<std::string> missing;
  for (const RecordField& field : recordFields()) {
    const auto entry =
        std::find_if(section.entries.begin(), section.entries.end(),
                     [&](const Entry& e) { return equalIgnoringCase(e.key, field.name); });
    if (entry == section.entries.end()) {
      missing.emplace_back(field.name);
    } else if (!parseNumber(withoutQuotes(entry->value))) {
      complaints.push_back(
          located(name, entry->line, entry->column,
                  std::string(field.name) + " is not a number: \"" + entry->value + "\""));
    }
  }
  if (!missing.empty()) {
    complaints.push_back(name + ": missing and read as 0: " + joined(missing, ", "));
  }
  return complaints;
}

CameraFile loadCamera(const std::string& path) {
  CameraFile camera;
  camera.complaints = inspectCameraText(path, readFile(path));
  // Profile functions look for bare names in the system's own folder, so the path is made absolute.
  const std::string absolute = std::filesystem::absolute(path).string();
  LoadCalibrationParam(absolute.c_str(), camera.param);
  return camera;
}

void stageCamera(OutputFiles& files, const std::string& path,
                 const FishEyeCalibrationParam& param) {
  const std::string temporary = files.stageCopy(path).string();
  SaveCalibrationParam(temporary.c_str(), param);
  // The library does not say whether it could write: read back what must have arrived.
  FishEyeCalibrationParam stored{};
  LoadCalibrationParam(temporary.c_str(), stored);
  std::error_code error;
  const bool same = std::abs(stored.u0 - param.u0) <= 1e-5f * std::abs(param.u0) + 1e-6f &&
                    std::abs(stored.Pixel - param.Pixel) <= 1e-5f * std::abs(param.Pixel) + 1e-6f;
  const bool finite = std::isfinite(param.u0) && std::isfinite(param.Pixel);
  if (!std::filesystem::exists(temporary, error) || (finite && !same)) {
    failJob(path + ": the camera could not be saved");
  }
}

}  // namespace host
