// Two cameras joined the plain way: every step an obvious loop over points or pixels, in the order
// in which the operations are described. Nothing is shared with src/; the library gives the same
// bytes, and its speed is compared with this.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "fisheye_calibration.h"

namespace plain {

// GetCommonPoints with a table of counters.
void getCommonPoints(const std::vector<CalibrationPoint>& first,
                     const std::vector<CalibrationPoint>& second, int idCount,
                     std::vector<CalibrationPoint>& firstCommon,
                     std::vector<CalibrationPoint>& secondCommon);

// One camera of a rig.
struct StitchCamera {
  std::vector<unsigned char> image;  // rows bottom-up
  int width = 0;
  int height = 0;
  int bits = 8;
  FishEyeCalibrationParam param{};
  std::vector<CalibrationPoint> points;
};

// The corrected view at twice the frame's size; black and without content where it fails.
struct StitchView {
  int width = 0;
  int height = 0;
  int bits = 8;
  std::vector<unsigned char> pixels;
  std::vector<unsigned char> mask;
};
StitchView doubledView(const StitchCamera& camera);

// Pixels of the first doubled view to pixels of the second, in picture rows or in buffer rows.
cv::Matx33d firstToSecond(const StitchCamera& first, const StitchCamera& second, bool bufferRows);

void stitchedImageSize(const StitchCamera& first, const StitchCamera& second, int& width,
                       int& height);

// The canvas loop.
void composeCanvas(const StitchView& first, const StitchView& second, const cv::Matx33d& M,
                   unsigned char* canvas, int width, int height, int bits);

// FishEyeImageStitching without debug files, for cameras that share points.
void fishEyeImageStitching(const StitchCamera& first, const StitchCamera& second,
                           unsigned char* canvas, int width, int height, int bits,
                           DualFishEyeCalibrationParam& dual);

// DualCam_CroppingImage for sizes that are multiples of 4, pixel by pixel.
void dualCamCroppingImage(const unsigned char* src, int srcWidth, int srcHeight, int bits,
                          int cropLeft, int cropTop, DualFishEyeCalibrationParam& dual,
                          unsigned char* dst, int dstWidth, int dstHeight);

// The bytes of a debug bitmap file.
std::string debugBitmap(const std::vector<unsigned char>& pixels, int width, int height, int bits);

}  // namespace plain
