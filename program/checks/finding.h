// Something worth telling about the input or the result of a calibration.
#pragma once

#include <string>
#include <vector>

namespace fisheye_calibration::program {

enum class FindingKind {
  // of the points, before the calibration
  TooFewPoints,
  DuplicateIds,
  OutsideImage,
  BeyondReach,
  NearReach,
  SmallCoverage,
  SmallFrontalTarget,
  CollinearPoints,
  CoincidentPoints,
  ScalePair,
  // of the record
  Empty,
  NotFinite,
  FocalLength,
  PrincipalPoint,
  LensCurve,
  LensShape,
  Rotation,
  Pose,
  Homography,
  PixelSize,
  // of the record together with the points
  HomographyNotFound,
  ReprojectionError,
  Depth,
  SecondCorrection,
  // of two cameras that are to be stitched
  BitCounts,
  FrameSizes,
  ViewSize,
  WorldRange,
  WorldsDiffer,
  UnusedIds,
  FewSharedPoints,
  SharedCoverage,
  CameraOrder,
};

enum class Severity {
  Doubtful,    // told, and the work goes on
  Impossible,  // the input cannot be used, or the result is not to be trusted
};

struct Finding {
  FindingKind kind;
  Severity severity;
  std::string text;
  std::vector<int> pointIds = {};
};

bool anyImpossible(const std::vector<Finding>& findings);

// "points 1, 2 and 7"; every id once; long lists are cut with the number of what is left
// out.
std::string namedPoints(const std::vector<int>& ids);

}  // namespace fisheye_calibration::program
