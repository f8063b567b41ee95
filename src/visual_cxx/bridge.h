// The functions of fisheye_calibration.h as C functions, through which the front for hosts built
// with Visual C++ reaches the library that another compiler built. No vector and no exception
// crosses, only plain memory, which both compilers lay out and pass alike.
//
// Both sides include this header, each with its own <vector> behind fisheye_calibration.h.
#pragma once

#include <cstddef>

#include "fisheye_calibration.h"
#include "visual_cxx/outcome.h"

namespace fisheye_calibration::visual_cxx {

struct PointList {
  const CalibrationPoint* points;
  std::size_t count;
};

struct CameraView {
  unsigned char* image;
  ImageLong width;
  ImageLong height;
  int bits;
  const FishEyeCalibrationParam* param;
  PointList points;
};

// Appends a point to one of the host's vectors; false if there is no memory.
using Append = bool (*)(void* vector, const CalibrationPoint* point);

extern "C" {
// `random` is the rand() of the host's own C runtime, which fills k2...k5.
Outcome bridgeSingleCamCalibration(ImageLong width, ImageLong height, CalibrationPoint* points,
                                   std::size_t count, ImageLong correctedWidth,
                                   ImageLong correctedHeight, int (*random)(),
                                   FishEyeCalibrationParam* param, double* reprojectionError,
                                   Failure* failure) noexcept;
Outcome bridgeSaveCalibrationParam(const char* path, const FishEyeCalibrationParam* param,
                                   Failure* failure) noexcept;
Outcome bridgeLoadCalibrationParam(const char* path, FishEyeCalibrationParam* param,
                                   Failure* failure) noexcept;
Outcome bridgeSaveDualCamerasCalibrationParam(const char* path,
                                              const DualFishEyeCalibrationParam* param,
                                              Failure* failure) noexcept;
Outcome bridgeLoadDualCamerasCalibrationParam(const char* path, DualFishEyeCalibrationParam* param,
                                              Failure* failure) noexcept;
Outcome bridgeSingleCamCorrected(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight,
                                 int bitCount, const FishEyeCalibrationParam* param,
                                 unsigned char* dst, ImageLong dstWidth, ImageLong dstHeight,
                                 unsigned char* mask, Failure* failure) noexcept;
Outcome bridgeRawImageToCorrectedImagePoint(float rawX, float rawY,
                                            const FishEyeCalibrationParam* param, float* x,
                                            float* y, Failure* failure) noexcept;
Outcome bridgeWorldToRawImagePoint(float Xw, float Yw, float Zw,
                                   const FishEyeCalibrationParam* param, float* x, float* y,
                                   Failure* failure) noexcept;
Outcome bridgeWorldToCorrectedImagePoint(float Xw, float Yw, float Zw,
                                         const FishEyeCalibrationParam* param, float cx, float cy,
                                         float* x, float* y, Failure* failure) noexcept;
Outcome bridgeWorldToSecondCorrectedImagePoint(float Xw, float Yw, float Zw,
                                               const FishEyeCalibrationParam* param, float cx,
                                               float cy, float* x, float* y,
                                               Failure* failure) noexcept;
Outcome bridgeRawImageToWorldPoint(float rawX, float rawY, const FishEyeCalibrationParam* param,
                                   float* Xw, float* Yw, float* Zw, Failure* failure) noexcept;
Outcome bridgeCorrectedImageToWorldPoint(float x, float y, float cx, float cy,
                                         const FishEyeCalibrationParam* param, float* Xw, float* Yw,
                                         float* Zw, Failure* failure) noexcept;
Outcome bridgeCroppingImage(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight,
                            int bitCount, unsigned char* dst, ImageLong dstWidth,
                            ImageLong dstHeight, Failure* failure) noexcept;
Outcome bridgeHandEyeCalibration(const PointList* points, double* params, double* errorX,
                                 double* errorY, Failure* failure) noexcept;
Outcome bridgeGetPerspectiveTransformationParam(const PointList* points, double* params,
                                                double* value1, double* value2,
                                                Failure* failure) noexcept;
Outcome bridgeGetCommonPoints(const PointList* first, const PointList* second, int idCount,
                              Append append, void* firstCommon, void* secondCommon,
                              Failure* failure) noexcept;
Outcome bridgeComputeStitchedImageSize(const CameraView* first, const CameraView* second,
                                       ImageLong* width, ImageLong* height, int* bits,
                                       Failure* failure) noexcept;
Outcome bridgeFishEyeImageStitching(const CameraView* first, const CameraView* second,
                                    unsigned char* stitched, ImageLong width, ImageLong height,
                                    int bits, DualFishEyeCalibrationParam* dual,
                                    Failure* failure) noexcept;
Outcome bridgeDualCamCroppingImage(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight,
                                   int bitCount, int cropLeft, int cropTop,
                                   DualFishEyeCalibrationParam* dual, unsigned char* dst,
                                   ImageLong dstWidth, ImageLong dstHeight,
                                   Failure* failure) noexcept;
Outcome bridgeDualCamWorldToSecondCorrectedImagePoint(float Xw, float Yw, float Zw,
                                                      const DualFishEyeCalibrationParam* dual,
                                                      float* u, float* v,
                                                      Failure* failure) noexcept;
Outcome bridgeDualCamCorrectedImageToWorldPoint(float u, float v,
                                                const DualFishEyeCalibrationParam* dual, float* Xw,
                                                float* Yw, float* Zw, Failure* failure) noexcept;
}

}  // namespace fisheye_calibration::visual_cxx
