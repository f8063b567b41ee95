// Two calibrated cameras in one picture.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "base/frame_buffer.h"
#include "geometry/stitch_pair.h"
#include "geometry/whole_datum.h"
#include "page/calibration_job.h"

namespace fisheye_calibration::program {

struct StitchedPoint {
  int id = 0;
  cv::Point2d bed;
  cv::Point2d apart;  // right minus left on the bed, mm
};

struct StitchOutcome {
  StitchPair pair;  // with the frames of the first stitch
  DualFishEyeCalibrationParam exact{};
  WholeDatum whole;  // the record for the file
  std::vector<StitchedPoint> points;
  double rms = 0;    // mm
  double worst = 0;  // mm
  std::vector<std::string> warnings;
  bool trusted = false;
};

// Fails as a job if the frames cannot be stitched.
StitchOutcome stitched(const CalibrationOutcome& left, const cv::Mat& leftFrame,
                       const CalibrationOutcome& right, const cv::Mat& rightFrame);

// The picture of the pair's own frames, and its record.
cv::Mat stitchedPicture(StitchPair& pair, DualFishEyeCalibrationParam& record);

// The picture of later frames.
cv::Mat stitchedPicture(const StitchOutcome& outcome, const cv::Mat& left, const cv::Mat& right);

}  // namespace fisheye_calibration::program
