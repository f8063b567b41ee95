// The fisheye camera model with two distortion coefficients. A point Y in the camera frame is seen
// at
//
//   a = Y1/Y3, b = Y2/Y3, r = sqrt(a^2 + b^2), theta = atan r      (incidence angle, radians)
//   theta_d = theta + k0 theta^2 + k1 theta^3
//   xd = a theta_d/r, yd = b theta_d/r
//   u = fx (xd + alpha yd) + cx, v = fy yd + cy                    (pixels)
//
// an equidistant projection (Kannala and Brandt's family) with a polynomial of degree three. Poses
// are rotation vectors (axis times angle, Rodrigues' formula) and translations that map a target
// point X to the camera frame, Y = R X + T. All arithmetic is in double precision; results are
// narrowed to 32-bit float at the end if the caller's arrays hold floats. For arrays of another
// shape or type cv::Exception is thrown, with code -215 and the text of the failed condition
// (compatibility 20).
#pragma once

#include <opencv2/core.hpp>

namespace fisheye_calibration::fisheye {

// Projects N target points (CV_32FC3 or CV_64FC3) into the image: imagePoints gets two channels of
// the same depth. _K is 3x3 (its skew entry is not read, skew is `alpha`), _D holds (k0, k1), of
// _K's type. Points behind the camera are projected by the same formulas; a depth of 0 counts as 1
// (compatibility 26). jacobian, if wanted: 2N x 13, CV_64F, rows u and v of each point in turn,
// columns fx, fy, cx, cy, k0, k1, rotation vector (3), translation (3), alpha.
void projectPoints(cv::InputArray objectPoints, cv::OutputArray imagePoints, cv::InputArray _rvec,
                   cv::InputArray _tvec, cv::InputArray _K, cv::InputArray _D, double alpha = 0,
                   cv::OutputArray jacobian = cv::noArray());

// Inverts the model for N pixels (CV_32FC2 or CV_64FC2): normalised coordinates (tan theta along
// the direction of the pixel), rotated by R (3x3 or rotation vector) and projected with P (3x3 or
// 3x4) if these are given. theta is found by Newton's method on theta_d; theta_d is clamped to
// pi/2. A pixel whose iteration does not converge under `criteria`, or ends at a negative angle,
// becomes (-1000000, -1000000). Skew is not removed. With a count-only criterion the principal
// point itself becomes NaN.
void undistortPoints(cv::InputArray distorted, cv::OutputArray undistorted, cv::InputArray K,
                     cv::InputArray D, cv::InputArray R = cv::noArray(),
                     cv::InputArray P = cv::noArray(),
                     cv::TermCriteria criteria = cv::TermCriteria(cv::TermCriteria::MAX_ITER +
                                                                      cv::TermCriteria::EPS,
                                                                  10, 1e-8));

// For every pixel of a corrected image of `size`: the position in the raw image that it shows, as
// fixed-point maps with 5 fractional bits in the form that cv::remap takes. The corrected view is
// the pinhole camera P (3x3, or the left block of 3x4) rotated by R (3x3 or rotation vector), its
// principal point always at the image's centre, (trunc(width/2 + 0.5), trunc(height/2 + 0.5))
// (compatibility 36):
//   (X, Y, W) = (P R)^-1 (column, row, 1), a = X/W, b = Y/W, then u = fx a theta_d/r + cx,
//   v = fy b theta_d/r + cy.
// map1: CV_16SC2, whole (column, row); map2: CV_16UC1, row fraction * 32 + column fraction, in
// units of 1/32 pixel, rounded to the nearest, ties to even. Positions beyond 16 bits wrap around
// (compatibility 39). Rays that point away from the camera (W <= 0; compatibility 38), positions
// that are NaN or beyond 32 bits, and every ray of a singular P R give whole (0, 0), fraction 0.
//
// K is 3x3 (its skew entry is not read), D holds (k0, k1) or nothing (both 0); all in single or
// double precision, even an empty D. m1type must be CV_16SC2. The maps are created before the other
// arguments are checked.
void initUndistortRectifyMap(cv::InputArray K, cv::InputArray D, cv::InputArray R, cv::InputArray P,
                             const cv::Size& size, int m1type, cv::OutputArray map1,
                             cv::OutputArray map2);

// Estimates focal lengths, principal point and distortion of one camera, and the pose of a planar
// target in each view, by damped Gauss-Newton on the reprojection error: step factor 1 - 0.6^(i+1)
// in iteration i, all poses estimated again after every step. Starts from an equidistant lens of
// focal length max(width, height)/pi with its principal point at the image centre. Neither the
// contents of K and D nor the flags are read, and skew is held at 0 (compatibility 18).
//
// objectPoints (3-channel) and imagePoints (2-channel), f32 or f64, one list per view. K is 3x3, D
// 2x1, rvecs and tvecs one triple per view; each is CV_64F if passed empty, else of the caller's
// type. `criteria`: iteration count and/or bound on the relative change of (fx, fy, cx, cy).
// Returns the root-mean-square reprojection error in pixels. Divergence is not an error.
double calibrate(cv::InputArrayOfArrays objectPoints, cv::InputArrayOfArrays imagePoints,
                 const cv::Size& image_size, cv::InputOutputArray K, cv::InputOutputArray D,
                 cv::OutputArrayOfArrays rvecs, cv::OutputArrayOfArrays tvecs, int flags,
                 cv::TermCriteria criteria);

}  // namespace fisheye_calibration::fisheye
