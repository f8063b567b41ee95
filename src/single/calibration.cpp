#include "solver/calibration.h"

#include <cstddef>

#include "fisheye_calibration.h"
#include "platform/message_box.h"
#include "single/completed_record.h"
#include "single/solver_view.h"

namespace fisheye_calibration::single {
namespace {

constexpr std::size_t kFewestPoints = 9;  // fewer show a message (compatibility 13)
constexpr int kMostSteps = 20;
constexpr double kSmallestChange = 1e-6;

}  // namespace
}  // namespace fisheye_calibration::single

using namespace fisheye_calibration;
using namespace fisheye_calibration::single;

// The picture and its bit count are not used (compatibility 15).
bool SingleCamCalibration(unsigned char* /*image*/, ImageLong width, ImageLong height,
                          int /*bitCount*/, std::vector<CalibrationPoint>& points,
                          ImageLong correctedWidth, ImageLong correctedHeight,
                          FishEyeCalibrationParam& param, double& reprojectionError) {
  if (points.size() < kFewestPoints) {
    platform::showMessage("特征点少于9个点，无法完成标定！");
    return false;
  }
  const solver::Calibration solved =
      solver::calibrate({solverView(points)}, cv::Size(width, height),
                        cv::TermCriteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS,
                                         kMostSteps, kSmallestChange));
  return completeRecord(solved.camera, solved.poses.front(), points, correctedWidth,
                        correctedHeight, param, reprojectionError);
}
