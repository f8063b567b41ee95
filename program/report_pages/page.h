// The frame of a report: one file that asks no other place for anything.
#pragma once

#include <string>
#include <vector>

namespace fisheye_calibration::program {

struct Section {
  std::string id;
  std::string heading;
  std::string content;  // markup
};

enum class Tone { kGood, kWarning, kBad };

// A paragraph that stands out.
std::string notice(Tone tone, const std::string& text);

// A value to be read from afar, with its name and unit; `name` is also for programs that read the
// page. "unknown" if the value is not finite.
std::string reading(const std::string& name, const std::string& label, double value,
                    const std::string& unit);

// `head` is markup: what to know first. Every section is listed at the top.
std::string reportPage(const std::string& title, const std::string& subtitle,
                       const std::string& head, const std::vector<Section>& sections);

}  // namespace fisheye_calibration::program
