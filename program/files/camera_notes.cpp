#include "files/camera_notes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <sstream>

#include "base/text.h"
#include "files/ini_section.h"
#include "files/read_file.h"

namespace fisheye_calibration::program {
namespace {

constexpr std::string_view kSectionName = "FisheyeCalibrationProgram";
constexpr std::string_view kDigestKey = "Record";
constexpr std::string_view kRecordSection = "CalibraionParam";  // the library's spelling
constexpr std::size_t kLensNumbers = 36;

std::string_view valueOf(const IniSection& section, std::string_view key) {
  const auto entry = std::find_if(section.entries.begin(), section.entries.end(),
                                  [&](const IniEntry& e) { return equalIgnoringCase(e.key, key); });
  return entry == section.entries.end() ? std::string_view() : std::string_view(entry->value);
}

std::optional<Size> sizeIn(const IniSection& section, const std::string& name) {
  const auto width = parseInteger(valueOf(section, name + "Width"));
  const auto height = parseInteger(valueOf(section, name + "Height"));
  const auto isSide = [](int side) { return side >= 1 && side <= kLargestImageSide; };
  if (!width || !height || !isSide(*width) || !isSide(*height)) {
    return std::nullopt;
  }
  return Size{.width = *width, .height = *height};
}

std::optional<std::vector<double>> numbersIn(std::string_view text, std::size_t count) {
  std::vector<double> numbers;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(','), text.size());
    const auto number = parseNumber(trimmed(text.substr(0, end)));
    if (!number) {
      return std::nullopt;
    }
    numbers.push_back(*number);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return numbers.size() == count ? std::optional(numbers) : std::nullopt;
}

std::string sectionText(const CameraNotes& notes) {
  std::string text = "[" + std::string(kSectionName) + "]\r\n";
  const auto line = [&](const std::string& key, const std::string& value) {
    text += key + "=" + value + "\r\n";
  };
  const auto size = [&](const std::string& name, const std::optional<Size>& value) {
    if (value) {
      line(name + "Width", std::to_string(value->width));
      line(name + "Height", std::to_string(value->height));
    }
  };
  const auto number = [&](const std::string& key, const std::optional<double>& value) {
    if (value && std::isfinite(*value)) {
      line(key, shortest(*value));
    }
  };
  size("Image", notes.image);
  size("Corrected", notes.corrected);
  number("BedErrorInsideTarget", notes.insideTarget);
  number("BedErrorOnBed", notes.onBed);
  if (notes.lensCovariance) {
    std::vector<std::string> numbers;
    for (const double value : *notes.lensCovariance) {
      numbers.push_back(shortest(value));
    }
    line("LensCovariance", joined(numbers, ","));
  }
  return text;
}

// FNV-1a over the record's lines.
std::string digestOfRecord(std::string_view text) {
  std::uint64_t digest = 14695981039346656037ULL;
  const auto add = [&](std::string_view part) {
    for (const char c : part) {
      digest = (digest ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
    }
  };
  for (const IniEntry& entry : readIniSection(text, kRecordSection).entries) {
    add(entry.key);
    add("=");
    add(entry.value);
    add("\n");
  }
  std::ostringstream hex;
  hex << std::hex << std::setw(16) << std::setfill('0') << digest;
  return hex.str();
}

bool isHeader(std::string_view line) { return trimmed(line).starts_with('['); }

bool isOwnHeader(std::string_view line) {
  line = trimmed(line);
  const std::size_t end = line.find(']');
  return isHeader(line) && end != std::string_view::npos &&
         equalIgnoringCase(trimmed(line.substr(1, end - 1)), kSectionName);
}

}  // namespace

std::string withNotes(std::string_view text, const CameraNotes& notes) {
  std::string kept;
  bool inside = false;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    const std::size_t length = end == std::string_view::npos ? text.size() : end + 1;
    const std::string_view line = text.substr(0, length);
    inside = isHeader(line) ? isOwnHeader(line) : inside;
    if (!inside) {
      kept += line;
    }
    text.remove_prefix(length);
  }
  if (!kept.empty() && !kept.ends_with('\n')) {
    kept += "\r\n";
  }
  const std::string digest = digestOfRecord(kept);
  return kept + sectionText(notes) + std::string(kDigestKey) + "=" + digest + "\r\n";
}

CameraNotes notesIn(std::string_view text) {
  const IniSection section = readIniSection(text, kSectionName);
  CameraNotes notes;
  const std::string_view digest = valueOf(section, kDigestKey);
  if (!digest.empty() && digest != digestOfRecord(text)) {
    notes.outdated = true;
    return notes;
  }
  notes.image = sizeIn(section, "Image");
  notes.corrected = sizeIn(section, "Corrected");
  notes.insideTarget = parseNumber(valueOf(section, "BedErrorInsideTarget"));
  notes.onBed = parseNumber(valueOf(section, "BedErrorOnBed"));
  notes.lensCovariance = numbersIn(valueOf(section, "LensCovariance"), kLensNumbers);
  return notes;
}

CameraNotes loadNotes(const std::filesystem::path& path) { return notesIn(readFile(path)); }

}  // namespace fisheye_calibration::program
