#include "page/stitch_job.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "base/failure.h"
#include "checks/agreement_checks.h"
#include "checks/stitch_checks.h"
#include "geometry/metric_picture.h"
#include "geometry/stitch_agreement.h"
#include "geometry/stitched_canvas.h"

namespace fisheye_calibration::program {
namespace {

StitchCamera cameraOf(const char* name, const CalibrationOutcome& outcome, const cv::Mat& frame) {
  return {.cameraName = std::string(name) + " camera",
          .pointsName = std::string("points of the ") + name + " camera",
          .frame = toBuffer(frame),
          .param = outcome.chosen.result.param,
          .corrected = outcome.chosen.result.corrected,
          .points = outcome.request.views[outcome.request.bedView].points};
}

void take(const Findings& findings, StitchOutcome& outcome) {
  for (const Finding& finding : findings) {
    if (finding.severity == Severity::kImpossible) {
      failJob(finding.text);
    }
    outcome.warnings.push_back(finding.text);
    outcome.trusted = outcome.trusted && finding.severity != Severity::kUntrusted;
  }
}

FrameBuffer stitchedBuffer(StitchPair& pair, DualFishEyeCalibrationParam& record) {
  try {
    FrameBuffer canvas = newCanvas(pair);
    record = stitchOnto(canvas, pair);
    return canvas;
  } catch (const cv::Exception& error) {
    failJob("the frames cannot be stitched (" + error.err + ")");
  } catch (const std::bad_alloc&) {
    failJob("not enough memory to stitch the frames");
  }
}

}  // namespace

StitchOutcome stitched(const CalibrationOutcome& left, const cv::Mat& leftFrame,
                       const CalibrationOutcome& right, const cv::Mat& rightFrame) {
  StitchOutcome outcome;
  outcome.trusted = true;
  outcome.pair.left = cameraOf("left", left, leftFrame);
  outcome.pair.right = cameraOf("right", right, rightFrame);
  const SharedPoints shared = sharedPoints(outcome.pair);
  take(checkStitch(outcome.pair, shared), outcome);
  stitchedBuffer(outcome.pair, outcome.exact);
  const std::vector<Agreement> agreement = agreementAt(outcome.pair, shared, outcome.exact);
  take(checkAgreement(agreement, shared.left.size()), outcome);
  const MetricPicture picture = metricPicture(outcome.exact);
  for (const Agreement& at : agreement) {
    const cv::Point2d leftBed = picture.bedAt(at.left);
    outcome.points.push_back({at.pointId, leftBed, picture.bedAt(at.right) - leftBed});
  }
  const double pixel = static_cast<double>(outcome.exact.Pixel);
  outcome.rms = rootMeanSquare(agreement, &Agreement::apart) * pixel;
  outcome.worst = worstApart(agreement) * pixel;
  outcome.whole = withWholeDatum(outcome.exact);
  return outcome;
}

cv::Mat stitchedPicture(StitchPair& pair, DualFishEyeCalibrationParam& record) {
  return toPicture(stitchedBuffer(pair, record));
}

cv::Mat stitchedPicture(const StitchOutcome& outcome, const cv::Mat& left, const cv::Mat& right) {
  const auto fits = [](const FrameBuffer& was, const cv::Mat& now) {
    return was.size.width == now.cols && was.size.height == now.rows;
  };
  if (!fits(outcome.pair.left.frame, left) || !fits(outcome.pair.right.frame, right)) {
    failJob("a camera's picture has another size now; calibrate again");
  }
  StitchPair pair = outcome.pair;
  pair.left.frame = toBuffer(left);
  pair.right.frame = toBuffer(right);
  DualFishEyeCalibrationParam record{};
  return stitchedPicture(pair, record);
}

}  // namespace fisheye_calibration::program
