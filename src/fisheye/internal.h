// The steps of the planar-target calibration, each callable on its own. Conventions are those of
// fisheye.h. "internal" is also a name in the image library's namespace: do not combine
// `using namespace cv` with this header.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace fisheye_calibration::internal {

// One camera's intrinsics. Every packed parameter vector and the mask follow the order focal x,
// focal y, principal x, principal y, skew, distortion first, distortion second.
struct IntrinsicParams {
  cv::Vec2d focalLength;     // pixels
  cv::Vec2d principalPoint;  // pixels
  cv::Vec2d distortion;      // k0, k1
  double skew = 0;           // alpha: the camera matrix holds skew * focal x at (0, 1)
  std::vector<uchar>
      estimateMask;  // 7 bytes; 1: the solver estimates this parameter, 0: it is held

  // All numbers 0, nothing estimated.
  IntrinsicParams();

  // Adds the next element of `a` (CV_64FC1) to each estimated parameter; held ones keep their
  // value.
  IntrinsicParams operator+(const cv::Mat& a) const;

  // Assigns the next element of `a` (CV_64FC1) to each estimated parameter; held ones become 0.
  IntrinsicParams& operator=(const cv::Mat& a);
};

// fisheye::projectPoints with the camera of `param`.
void projectPoints(cv::InputArray objectPoints, cv::OutputArray imagePoints, cv::InputArray _rvec,
                   cv::InputArray _tvec, const IntrinsicParams& param, cv::OutputArray jacobian);

// Ideal normalised coordinates of raw pixels (CV_64FC2) as N x 1 CV_64FC2: skew removed, then the
// inverse model with at most 10 Newton steps to 1e-8. Pixels without a solution give -1000000.
cv::Mat NormalizePixels(const cv::Mat& imagePoints, const IntrinsicParams& param);

// Homography (3x3, CV_64F) that maps the plane points M to the image points m, each 2 x N or 3 x N
// doubles, one point per column: normalised direct linear transform (Hartley and Zisserman) and,
// for five or more points, exactly ten Gauss-Newton steps on the image error. Degenerate points are
// not detected.
cv::Mat ComputeHomography(cv::Mat m, cv::Mat M);

// Pose of a flat target (any plane) from one view by decomposing the homography between its plane
// and the ideal image (Zhang). omckk and Tckk become 3x1 CV_64F. Returns false, with both
// untouched, if the homography's scale is NaN.
bool InitExtrinsics(const cv::Mat& _imagePoints, const cv::Mat& _objectPoints,
                    const IntrinsicParams& param, cv::Mat& omckk, cv::Mat& Tckk);

// Refines a pose by at most 20 Gauss-Newton steps on the reprojection error, until the relative
// step is at most 1e-10; maxIter is not read (compatibility 19). A step whose Jacobian's ratio of
// singular values exceeds thresh_cond is rejected and ends the refinement. rvec and tvec become 3x1
// CV_64F unless no step was accepted. J receives the 2N x 6 Jacobian of the last iteration. With
// fewer than three points no step is accepted.
void ComputeExtrinsicRefine(const cv::Mat& imagePoints, const cv::Mat& objectPoints, cv::Mat& rvec,
                            cv::Mat& tvec, cv::Mat& J, int maxIter, const IntrinsicParams& param,
                            double thresh_cond);

// Pose of every view: InitExtrinsics, then ComputeExtrinsicRefine. Returns false if a view has no
// initial pose: earlier views keep their new poses, it and later ones their old ones. With
// check_cond set, a view whose Jacobian's ratio exceeds thresh_cond throws error -3. Only one of
// omc and Tc needs the right type (compatibility 21).
bool CalibrateExtrinsics(cv::InputArrayOfArrays objectPoints, cv::InputArrayOfArrays imagePoints,
                         const IntrinsicParams& param, int check_cond, double thresh_cond,
                         cv::InputOutputArray omc, cv::InputOutputArray Tc);

// Normal equations JJ2 G = ex3 of the reprojection error at the given parameters, reduced to the
// estimated intrinsics followed by six pose unknowns per view.
void ComputeJacobians(cv::InputArrayOfArrays objectPoints, cv::InputArrayOfArrays imagePoints,
                      const IntrinsicParams& param, cv::InputArray omc, cv::InputArray Tc,
                      const int& check_cond, const double& thresh_cond, cv::Mat& JJ2, cv::Mat& ex3);

// Residual statistics of a solution. errors: three-sigma bounds of the estimated intrinsics (its
// mask is set by the caller), std_err: standard deviation along x and y, rms: root mean square
// distance.
void EstimateUncertainties(cv::InputArrayOfArrays objectPoints, cv::InputArrayOfArrays imagePoints,
                           const IntrinsicParams& param, cv::InputArray omc, cv::InputArray Tc,
                           IntrinsicParams& errors, cv::Vec2d& std_err, double thresh_cond,
                           int check_cond, double& rms);

// Copies the rows and columns of `src` whose byte is non-zero to dst as f64. dst may be src.
void subMatrix(const cv::Mat& src, cv::Mat& dst, const std::vector<uchar>& cols,
               const std::vector<uchar>& rows);

}  // namespace fisheye_calibration::internal
