// Least-squares affine map between two point lists.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace fisheye_calibration {

// Fits u = a x + b y + e, v = c x + d y + f to the pairs (x, y) = src[i], (u, v) = dst[i] by the
// normal equations in double precision; params receives a, b, c, d, e, f. Also writes the pairs to
// the debug file "D:/Affine.txt", as lines "x<tab>y<tab>u<tab>v" with six decimals; failure to
// write it is ignored (compatibility 56).
//
// Returns false, with nothing written, if src is empty, the lists differ in length, params is null
// or the equations do not fit into memory (at most (2^31 - 1)/12 pairs). A singular system (fewer
// than three pairs, or all on a line) is not reported: the result is then computed from the
// partly inverted matrix (compatibility 43).
bool AffineFit(const std::vector<cv::Point2f>& src, const std::vector<cv::Point2f>& dst,
               float* params);

// The same without the debug file.
bool fitAffine(const std::vector<cv::Point2f>& src, const std::vector<cv::Point2f>& dst,
               float* params);

}  // namespace fisheye_calibration
