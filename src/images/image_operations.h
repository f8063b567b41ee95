// The steps around the distortion's removal: host buffers to images and back, the black test and
// the warp of the second correction. Images hold bytes, with 1, 3 or 4 channels. Host buffers hold
// their rows bottom-up without padding: image row j is buffer row height - 1 - j. The corrected
// image is rendered without these, in one pass that gives the same bytes.
#pragma once

#include <opencv2/core.hpp>

namespace fisheye_calibration {

// Copies a buffer of 8, 24 or 32 bits a pixel into `image`, which is already allocated: height x
// width bytes with 1, 3 or 4 channels. Any other bit count, an image of another size or type, and a
// null buffer copy nothing.
void BufferToImage(const unsigned char* buffer, int width, int height, int bitCount,
                   cv::Mat& image);

// Copies an image into a buffer of its size and reports width, height and bit count, that is
// channels * 8. Another number of channels, elements that are not bytes and a null buffer copy
// nothing; the three are reported all the same.
void ImageToBuffer(const cv::Mat& image, unsigned char* buffer, int& width, int& height,
                   int& bitCount);

// True when every byte is 0; true also for an empty image, another number of channels, and elements
// that are not bytes.
bool IsImageBlack(const cv::Mat& image);

// Nearest-neighbour warp by the inverse of a homography H and a shift: `result`, a new image of
// the source's size and type, shows at (x, y) the source pixel nearest to s = H^-1 (x - dx, y -
// dy):
//   w = h31 px + h32 py + h33, sx = (h11 px + h12 py + h13)/w, sy likewise, in double and then
//   narrowed to 32-bit float; column trunc(sx + 0.5), row trunc(sy + 0.5).
// Truncation is toward zero, so that -1.5 < sx <= -0.5 still shows column 0. Positions outside the
// source, beyond 32 bits or not a number show `fill` in every byte. A source that does not hold
// bytes of 1, 3 or 4 channels gives zeros. Always true. Raises cv::Exception unless Hinv is 3x3.
bool WarpByInverseHomography(const cv::Mat& source, cv::Mat& result, const cv::Mat& Hinv, double dx,
                             double dy, unsigned char fill);

}  // namespace fisheye_calibration
