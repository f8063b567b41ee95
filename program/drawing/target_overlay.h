// The picture that shows which points were found and how they are numbered.
#ifndef HOST_TARGET_OVERLAY_H
#define HOST_TARGET_OVERLAY_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "fisheye_calibration.h"

namespace host {

// `points` row by row; points of the same Yw are joined by a line.
cv::Mat drawTargetOverlay(const cv::Mat& grey, const std::vector<CalibrationPoint>& points,
                          const std::string& caption);

}  // namespace host

#endif  // HOST_TARGET_OVERLAY_H
