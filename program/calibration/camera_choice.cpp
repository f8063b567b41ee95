#include "calibration/camera_choice.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "base/failure.h"
#include "base/text.h"
#include "checks/result_checks.h"
#include "geometry/conversions.h"
#include "geometry/target_points.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kMuchWorse = 1.5;  // times the robust bound

void reproject(const FishEyeCalibrationParam& record, CalibrationPoint& point) {
  const cv::Point2f projected = rawPosition(record, bedPosition(point));
  point.ReprojPtX = static_cast<double>(projected.x);
  point.ReprojPtY = static_cast<double>(projected.y);
  point.ReprojErrX = static_cast<double>(point.ImagePtX) - point.ReprojPtX;
  point.ReprojErrY = static_cast<double>(point.ImagePtY) - point.ReprojPtY;
}

BedAccuracy judged(const FishEyeCalibrationParam& record, const RobustCamera& robust,
                   const RobustRequest& request, const JudgedBed& bed) {
  return bedAccuracy(robust.bed, record, request.image, targetBox(robust.result.points), bed);
}

// Whether a record is blind where the robust camera sees the bed.
bool missesAny(const BedAccuracy& accuracy, const BedAccuracy& robust) {
  for (std::size_t i = 0; i < robust.errors.size(); ++i) {
    if (std::isnan(accuracy.errors[i]) && robust.errors[i] <= robust.aroundTarget) {
      return true;
    }
  }
  return std::isnan(accuracy.insideTarget);
}

}  // namespace

CalibrationResult solveByLibrary(const TargetView& view, const std::vector<std::size_t>& leftOut,
                                 const Size& image, const Size& corrected) {
  const auto isLeftOut = [&](std::size_t i) {
    return std::find(leftOut.begin(), leftOut.end(), i) != leftOut.end();
  };
  CalibrationResult result;
  result.corrected = corrected;
  for (std::size_t i = 0; i < view.points.size(); ++i) {
    if (!isLeftOut(i)) {
      result.points.push_back(view.points[i]);
    }
  }
  try {
    // The library does not read the picture that its interface asks for.
    result.homographyFound =
        SingleCamCalibration(nullptr, image.width, image.height, 8, result.points, corrected.width,
                             corrected.height, result.param, result.rms);
  } catch (const cv::Exception& failure) {
    const std::string condition = onOneLine(failure.err.empty() ? failure.what() : failure.err);
    failJob(view.name + ": the solver gave up on these points (" + condition + ")");
  }
  for (std::size_t i = 0; i < view.points.size(); ++i) {
    if (isLeftOut(i)) {
      CalibrationPoint point = view.points[i];
      reproject(result.param, point);
      result.points.insert(result.points.begin() + static_cast<std::ptrdiff_t>(i), point);
    }
  }
  return result;
}

ChosenCamera chooseCamera(SolverChoice choice, const RobustCamera& robust,
                          const RobustRequest& request, double tolerance) {
  const auto solvedByLibrary = [&](const std::vector<std::size_t>& leftOut) {
    return withChosenPicture(request.picture, request.image, [&](const Size& corrected) {
      return solveByLibrary(request.views[request.bedView], leftOut, request.image, corrected);
    });
  };
  if (!isSolved(robust)) {
    ChosenCamera library{.result = solvedByLibrary({}), .fromLibrary = true};
    library.accuracy = unknownAccuracy(targetBox(library.result.points));
    return library;
  }
  const JudgedBed bed = judgedBed(robust.result);
  ChosenCamera chosen{.result = robust.result,
                      .accuracy = judged(robust.result.param, robust, request, bed)};
  const bool oneView = request.views.size() == 1 && !request.lens;
  if (choice == SolverChoice::kRobust || (choice == SolverChoice::kAuto && !oneView)) {
    return chosen;
  }
  const std::vector<std::size_t> leftOut =
      request.keepAll ? std::vector<std::size_t>() : robust.solved.wrongPoints[request.bedView];
  ChosenCamera library{.fromLibrary = true};
  try {
    library.result = solvedByLibrary(leftOut);
  } catch (const Failure& failure) {
    if (choice == SolverChoice::kLibrary) {
      throw;
    }
    chosen.reason = failure.what();
    return chosen;
  }
  // Both are compared where the robust camera's picture shows the bed, and each is reported where
  // its own does.
  const BedAccuracy compared = judged(library.result.param, robust, request, bed);
  library.accuracy = judged(library.result.param, robust, request, judgedBed(library.result));
  if (choice == SolverChoice::kLibrary) {
    return library;
  }
  const Findings findings = checkResult(library.result, request.image);
  const double limit = std::max(kMuchWorse * chosen.accuracy.onBed, tolerance);
  if (anyImpossible(findings) || missesAny(compared, chosen.accuracy)) {
    chosen.reason =
        "SingleCamCalibration diverges with these points; the camera is the robust "
        "solver's";
    return chosen;
  }
  if (!showsTarget(library.result) && showsTarget(robust.result)) {
    chosen.reason =
        "no corrected picture of SingleCamCalibration's camera shows the whole target; the camera "
        "is the robust solver's";
    return chosen;
  }
  if (!(compared.onBed <= limit)) {
    chosen.reason = "SingleCamCalibration's camera may be off by " + roundedToTwo(compared.onBed) +
                    " mm on the bed; the camera is the robust "
                    "solver's";
    return chosen;
  }
  return library;
}

}  // namespace fisheye_calibration::program
