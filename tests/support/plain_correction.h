// The corrected image made step by step, every step an image of its own: undistortion maps, two
// remaps, threshold, two nearest-neighbour warps, buffer copies. Nothing is shared with src/; the
// library's fused renderer gives the same bytes, and its speed is compared with this.
#pragma once

#include <opencv2/core.hpp>

#include "fisheye_calibration.h"

namespace plain {

// Fixed-point maps (CV_16SC2 and CV_16UC1) from a corrected image to the raw image. K is 3x3, D has
// two elements or none, R is empty, 3x3 or a rotation vector, P is empty, 3x3 or 3x4; all CV_64F.
// With `rows`, only these rows of the maps.
void undistortRectifyMap(const cv::Mat& K, const cv::Mat& D, const cv::Mat& R, const cv::Mat& P,
                         const cv::Size& size, cv::Mat& map1, cv::Mat& map2,
                         const cv::Range& rows = cv::Range::all());

// Host buffers (rows bottom-up, no padding) to images and back; one, three or four bytes a pixel.
cv::Mat imageOfBuffer(const unsigned char* buffer, int width, int height, int bitCount);
void storeInBuffer(const cv::Mat& image, unsigned char* buffer);

bool isImageBlack(const cv::Mat& image);

// The pixel nearest to Hinv (x, y); a coordinate that is NaN or beyond 32 bits becomes -1.
cv::Point nearestSource(const cv::Matx33d& Hinv, double x, double y);

// Result pixel (x, y) shows the source pixel nearest to Hinv (x - dx, y - dy), else `fill`.
cv::Mat warpByInverseHomography(const cv::Mat& source, const cv::Mat& Hinv, double dx, double dy,
                                unsigned char fill);

// SingleCamCorrected.
bool singleCamCorrected(const unsigned char* src, ImageLong srcWidth, ImageLong srcHeight,
                        int bitCount, const FishEyeCalibrationParam& param, unsigned char* dst,
                        ImageLong dstWidth, ImageLong dstHeight, unsigned char* mask);

// CroppingImage, pixel by pixel.
void croppingImage(const unsigned char* src, ImageLong srcWidth, ImageLong srcHeight, int bitCount,
                   unsigned char* dst, ImageLong dstWidth, ImageLong dstHeight);

}  // namespace plain
