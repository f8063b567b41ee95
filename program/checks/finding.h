// Something worth reporting about the input or the result of a calibration.
#pragma once

#include <string>
#include <vector>

namespace fisheye_calibration::program {

enum class FindingKind {
  // of the points, before the calibration
  kTooFewPoints,
  kDuplicateIds,
  kOutsideImage,
  kBeyondReach,
  kNearReach,
  kCollinearPoints,
  kCoincidentPoints,
  kScalePair,
  // of the record
  kEmpty,
  kNotFinite,
  kFocalLength,
  kPrincipalPoint,
  kLensCurve,
  kRotation,
  kPose,
  kHomography,
  kPixelSize,
  // of the record together with the points
  kHomographyNotFound,
  kReprojectionError,
  kDepth,
  kSecondCorrection,
  // of two cameras that are to be stitched
  kBitCounts,
  kFrameSizes,
  kViewSize,
  kWorldRange,
  kWorldsDiffer,
  kUnusedIds,
  kFewSharedPoints,
  kSharedCoverage,
  kCameraOrder,
  kSameCamera,
  kDisagreement,
};

enum class Severity {
  kDoubtful,    // reported, and the work goes on
  kUntrusted,   // the result is not to be trusted, and is written only if the user forces it
  kImpossible,  // the input cannot be used, or the result is not to be trusted
};

struct Finding {
  FindingKind kind;
  Severity severity;
  std::string text;
  std::vector<int> pointIds = {};
};

using Findings = std::vector<Finding>;

void addFinding(Findings& findings, Severity severity, FindingKind kind, std::string text,
                std::vector<int> pointIds = {});
void addDoubtful(Findings& findings, FindingKind kind, std::string text,
                 std::vector<int> pointIds = {});
void addUntrusted(Findings& findings, FindingKind kind, std::string text,
                  std::vector<int> pointIds = {});
void addImpossible(Findings& findings, FindingKind kind, std::string text,
                   std::vector<int> pointIds = {});

bool anyOf(const Findings& findings, Severity severity);
bool anyImpossible(const Findings& findings);

// "points 1, 2 and 7". Every id is named once; long lists are cut and end with the number of ids
// that are left out.
std::string namedPoints(const std::vector<int>& ids);

}  // namespace fisheye_calibration::program
