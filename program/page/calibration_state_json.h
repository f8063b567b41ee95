// The parts of the session's JSON that describe a calibration, and the values that they share with
// the rest of it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "geometry/metric_picture.h"
#include "page/session.h"

namespace fisheye_calibration::program {

// Numbers that are not finite become null, and the page needs no more than seven digits.
nlohmann::ordered_json number(double value);
// An empty text becomes null.
nlohmann::ordered_json optionalText(const std::string& text);
nlohmann::ordered_json rectangle(const cv::Rect2d& area);
nlohmann::ordered_json pairOf(cv::Point2d point);
const char* wordOf(JobStatus status);

// A picture that is laid out along the bed maps to it by X = a u + b v + c, Y = d u + e v + f.
nlohmann::ordered_json viewJson(const MetricPicture& picture);

nlohmann::ordered_json calibrationJson(const CalibrationState& state, bool outdated);

}  // namespace fisheye_calibration::program
