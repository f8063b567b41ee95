// The planar-target calibration of src/fisheye/internal.h and src/single derived a second time:
// every step in the obvious way on cv::Mat, with the image library's general routines.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "support/plain_model.h"

namespace plain {

// Points of one view: N x 1 or 1 x N, CV_64FC3 target points and CV_64FC2 pixels.
struct View {
  cv::Mat objectPoints;
  cv::Mat imagePoints;
};

struct Pose {
  cv::Mat rvec = cv::Mat::zeros(3, 1, CV_64F);
  cv::Mat tvec = cv::Mat::zeros(3, 1, CV_64F);
};

// Homography (3x3) from plane points M to image points m, one point a column, two or three rows.
cv::Mat computeHomography(cv::Mat m, cv::Mat M);

// Pose of a flat target from the homography; false if its scale is NaN.
bool initExtrinsics(const View& view, const Intrinsics& camera, Pose& pose);

// Refines the pose; returns the 2N x 6 Jacobian of the last iteration.
cv::Mat computeExtrinsicRefine(const View& view, const Intrinsics& camera, double thresh_cond,
                               Pose& pose);

// Ratio of the largest to the smallest singular value, from the full decomposition.
double conditionRatio(const cv::Mat& J);

// Pose of every view; false at the first view without an initial pose.
bool calibrateExtrinsics(const std::vector<View>& views, const Intrinsics& camera,
                         double thresh_cond, std::vector<Pose>& poses);

// Normal equations JJ2 G = ex3, reduced to the estimated intrinsics and six unknowns a view.
void computeJacobians(const std::vector<View>& views, const Intrinsics& camera,
                      const std::vector<Pose>& poses, cv::Mat& JJ2, cv::Mat& ex3);

struct Uncertainties {
  Intrinsics errors;  // three-sigma bounds
  cv::Vec2d std_err;
  double rms = 0;
};

Uncertainties estimateUncertainties(const std::vector<View>& views, const Intrinsics& camera,
                                    const std::vector<Pose>& poses);

struct Calibration {
  Intrinsics camera;
  std::vector<Pose> poses;
  Uncertainties uncertainties;
  int steps = 0;
};

Calibration calibrate(const std::vector<View>& views, const cv::Size& imageSize,
                      const cv::TermCriteria& criteria);

}  // namespace plain
