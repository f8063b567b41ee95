// Bilinear remap with fixed-point maps of 5 fractional bits, pixel by pixel. Gives the bytes of
// version 4.9.0 of the image library, whatever version is installed. Versions differ for samples
// that reach beyond the last column or row.
#pragma once

#include <opencv2/core.hpp>

namespace plain {

// source: CV_8U with any number of channels, sides of any length.
// map1: CV_16SC2, the upper left one (sx, sy) of the four pixels P00, P01, P10, P11 to mix.
// map2: CV_16UC1, 32 b + a, in 1/32 pixels. The mix is
//   ((32 - b) ((32 - a) P00 + a P01) + b ((32 - a) P10 + a P11) + 512) >> 10.

// Pixels outside the source have the value `border` in every channel. Creates the result.
void remapConstant(const cv::Mat& source, cv::Mat& result, const cv::Mat& map1, const cv::Mat& map2,
                   unsigned char border);

// Writes only samples whose upper left pixel lies in the source; samples that reach beyond the last
// column or row are means over the pixels that exist. The result exists already, of the map's size
// and the source's type.
void remapTransparent(const cv::Mat& source, cv::Mat& result, const cv::Mat& map1,
                      const cv::Mat& map2);

// The same for samples that begin in the last column or row, and only for these: what versions
// before 4.8.1 leave unwritten.
void remapLastColumnAndRow(const cv::Mat& source, cv::Mat& result, const cv::Mat& map1,
                           const cv::Mat& map2);

}  // namespace plain
