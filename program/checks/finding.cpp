#include "checks/finding.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <utility>

namespace fisheye_calibration::program {

void addFinding(Findings& findings, Severity severity, FindingKind kind, std::string text,
                std::vector<int> pointIds) {
  findings.push_back({.kind = kind,
                      .severity = severity,
                      .text = std::move(text),
                      .pointIds = std::move(pointIds)});
}

void addDoubtful(Findings& findings, FindingKind kind, std::string text,
                 std::vector<int> pointIds) {
  addFinding(findings, Severity::kDoubtful, kind, std::move(text), std::move(pointIds));
}

void addUntrusted(Findings& findings, FindingKind kind, std::string text,
                  std::vector<int> pointIds) {
  addFinding(findings, Severity::kUntrusted, kind, std::move(text), std::move(pointIds));
}

void addImpossible(Findings& findings, FindingKind kind, std::string text,
                   std::vector<int> pointIds) {
  addFinding(findings, Severity::kImpossible, kind, std::move(text), std::move(pointIds));
}

bool anyOf(const Findings& findings, Severity severity) {
  return std::any_of(findings.begin(), findings.end(),
                     [&](const Finding& finding) { return finding.severity == severity; });
}

bool anyImpossible(const Findings& findings) { return anyOf(findings, Severity::kImpossible); }

std::string namedPoints(const std::vector<int>& ids) {
  constexpr std::size_t kLongest = 12;
  std::vector<int> pointIds;
  std::set<int> named;
  for (const int id : ids) {
    if (named.insert(id).second) {
      pointIds.push_back(id);
    }
  }
  const std::size_t shown = pointIds.size() > kLongest ? kLongest - 1 : pointIds.size();
  std::string text = pointIds.size() == 1 ? "point " : "points ";
  for (std::size_t i = 0; i < shown; ++i) {
    if (i > 0) {
      text += i + 1 == pointIds.size() ? " and " : ", ";
    }
    text += std::to_string(pointIds[i]);
  }
  if (shown < pointIds.size()) {
    text += " and " + std::to_string(pointIds.size() - shown) + " more";
  }
  return text;
}

}  // namespace fisheye_calibration::program
