// The steps before and after undistortion: host buffers to images and back, the test for black and
// the warp of the second correction. Images hold bytes in 1, 3 or 4 channels. Host buffers hold
// their rows bottom-up without padding: image row j is buffer row height - 1 - j.
//
// These functions are for programs outside the library, which itself calls none of them: it renders
// a corrected image in one pass that gives the same bytes.
#pragma once

#include <opencv2/core.hpp>

namespace fisheye_calibration {

// Copies a buffer of 8, 24 or 32 bits per pixel into `image`, which must be allocated: height x
// width, bytes in 1, 3 or 4 channels. Copies nothing if the bit count is another one, the image has
// another size or type, or the buffer is null.
void BufferToImage(const unsigned char* buffer, int width, int height, int bitCount,
                   cv::Mat& image);

// Copies an image into a buffer of its size and returns its width, height and bit count (8 *
// channels) in the reference parameters. These are set even if nothing is copied because the
// elements are not bytes, the number of channels is another one or the buffer is null.
void ImageToBuffer(const cv::Mat& image, unsigned char* buffer, int& width, int& height,
                   int& bitCount);

// True if every byte is 0; also true if the image is empty, has another number of channels or its
// elements are not bytes.
bool IsImageBlack(const cv::Mat& image);

// Nearest-neighbour warp by the inverse of a homography H and a shift: `result`, a new image of
// the source's size and type, shows at (x, y) the source pixel nearest to s = H^-1 (x - dx, y -
// dy):
//   w = h31 px + h32 py + h33, sx = (h11 px + h12 py + h13)/w, sy likewise, in double and then
//   narrowed to 32-bit float; column trunc(sx + 0.5), row trunc(sy + 0.5).
// Truncation is toward zero, so -1.5 < sx <= -0.5 still shows column 0 (compatibility 40).
// Positions that are outside the source, beyond 32 bits or NaN show `fill` in every byte. A source
// that does not hold bytes in 1, 3 or 4 channels gives zeros. Always returns true. Raises
// cv::Exception unless Hinv is 3x3.
bool WarpByInverseHomography(const cv::Mat& source, cv::Mat& result, const cv::Mat& Hinv, double dx,
                             double dy, unsigned char fill);

}  // namespace fisheye_calibration
