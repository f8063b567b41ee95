#include "geometry/calibration_result.h"

#include <cmath>

#include "geometry/conversions.h"
#include "geometry/second_view.h"
#include "geometry/target_points.h"

namespace fisheye_calibration::program {

SecondCorrectionError secondCorrectionError(const CalibrationResult& result) {
  const cv::Point2f centre = centreOf(result.corrected);
  SecondCorrectionError worst;
  for (const CalibrationPoint& point : result.points) {
    const cv::Point2d rendered =
        renderedPosition(result.param, bedPosition(point), result.corrected);
    const cv::Point2d grid = secondCorrectedPosition(result.param, bedPosition(point), centre);
    const double error = std::hypot(rendered.x - grid.x, rendered.y - grid.y);
    if (std::isnan(error)) {
      return {.worstPixels = HUGE_VAL, .pointId = point.PointId};
    }
    if (!(error <= worst.worstPixels)) {
      worst = {.worstPixels = error, .pointId = point.PointId};
    }
  }
  return worst;
}

}  // namespace fisheye_calibration::program
