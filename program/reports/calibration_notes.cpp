#include "reports/calibration_notes.h"

namespace fisheye_calibration::program {

CameraNotes notesOf(const CalibrationReport& report) {
  CameraNotes notes{.image = report.request.image,
                    .corrected = report.chosen.result.corrected,
                    .insideTarget = report.chosen.accuracy.insideTarget,
                    .onBed = report.chosen.accuracy.onBed};
  if (isSolved(report.robust)) {
    const cv::Matx66d lens = report.robust.bed.covariance.get_minor<6, 6>(0, 0);
    notes.lensCovariance = std::vector<double>(lens.val, lens.val + 36);
  }
  return notes;
}

}  // namespace fisheye_calibration::program
