#include "visual_cxx/bridge.h"

#include <algorithm>
#include <new>
#include <opencv2/core.hpp>
#include <vector>

#include "single/calibration.h"
#include "stitching/common_points.h"

namespace fisheye_calibration::visual_cxx {
namespace {

using Points = std::vector<CalibrationPoint>;

// Runs a function of the library. No exception passes.
template <class Function>
Outcome guarded(Failure* failure, const Function& function) noexcept {
  try {
    return function() ? Outcome::kTrue : Outcome::kFalse;
  } catch (...) {
    return outcomeOfException(*failure);
  }
}

Points copied(const PointList& list) {
  return list.count == 0 ? Points() : Points(list.points, list.points + list.count);
}

// The library's vector over the host's points; what was written to it goes back, also if the call
// throws.
class PointsOfHost {
 public:
  PointsOfHost(CalibrationPoint* points, std::size_t count)
      : host_(points), points_(copied({points, count})) {}
  PointsOfHost(const PointsOfHost&) = delete;
  PointsOfHost& operator=(const PointsOfHost&) = delete;
  ~PointsOfHost() { std::copy(points_.begin(), points_.end(), host_); }

  Points& points() { return points_; }

 private:
  CalibrationPoint* host_;
  Points points_;
};

}  // namespace

Outcome bridgeSingleCamCalibration(ImageLong width, ImageLong height, CalibrationPoint* points,
                                   std::size_t count, ImageLong correctedWidth,
                                   ImageLong correctedHeight, int (*random)(),
                                   FishEyeCalibrationParam* param, double* reprojectionError,
                                   Failure* failure) noexcept {
  return guarded(failure, [&] {
    PointsOfHost host(points, count);
    return single::calibrateOrShowMessage(cv::Size(width, height), host.points(),
                                          cv::Size(correctedWidth, correctedHeight), random, *param,
                                          *reprojectionError);
  });
}

Outcome bridgeSaveCalibrationParam(const char* path, const FishEyeCalibrationParam* param,
                                   Failure* failure) noexcept {
  return guarded(failure, [&] { return SaveCalibrationParam(path, *param); });
}

Outcome bridgeLoadCalibrationParam(const char* path, FishEyeCalibrationParam* param,
                                   Failure* failure) noexcept {
  return guarded(failure, [&] { return LoadCalibrationParam(path, *param); });
}

Outcome bridgeSaveDualCamerasCalibrationParam(const char* path,
                                              const DualFishEyeCalibrationParam* param,
                                              Failure* failure) noexcept {
  return guarded(failure, [&] { return SaveDualCamerasCalibrationParam(path, *param); });
}

Outcome bridgeLoadDualCamerasCalibrationParam(const char* path, DualFishEyeCalibrationParam* param,
                                              Failure* failure) noexcept {
  return guarded(failure, [&] { return LoadDualCamerasCalibrationParam(path, *param); });
}

Outcome bridgeSingleCamCorrected(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight,
                                 int bitCount, const FishEyeCalibrationParam* param,
                                 unsigned char* dst, ImageLong dstWidth, ImageLong dstHeight,
                                 unsigned char* mask, Failure* failure) noexcept {
  return guarded(failure, [&] {
    return SingleCamCorrected(src, srcWidth, srcHeight, bitCount, *param, dst, dstWidth, dstHeight,
                              mask);
  });
}

Outcome bridgeRawImageToCorrectedImagePoint(float rawX, float rawY,
                                            const FishEyeCalibrationParam* param, float* x,
                                            float* y, Failure* failure) noexcept {
  return guarded(failure,
                 [&] { return RawImageToCorrectedImagePoint(rawX, rawY, *param, *x, *y); });
}

Outcome bridgeWorldToRawImagePoint(float Xw, float Yw, float Zw,
                                   const FishEyeCalibrationParam* param, float* x, float* y,
                                   Failure* failure) noexcept {
  return guarded(failure, [&] { return WorldToRawImagePoint(Xw, Yw, Zw, *param, *x, *y); });
}

Outcome bridgeWorldToCorrectedImagePoint(float Xw, float Yw, float Zw,
                                         const FishEyeCalibrationParam* param, float cx, float cy,
                                         float* x, float* y, Failure* failure) noexcept {
  return guarded(failure,
                 [&] { return WorldToCorrectedImagePoint(Xw, Yw, Zw, *param, cx, cy, *x, *y); });
}

Outcome bridgeWorldToSecondCorrectedImagePoint(float Xw, float Yw, float Zw,
                                               const FishEyeCalibrationParam* param, float cx,
                                               float cy, float* x, float* y,
                                               Failure* failure) noexcept {
  return guarded(failure, [&] {
    return WorldToSecondCorrectedImagePoint(Xw, Yw, Zw, *param, cx, cy, *x, *y);
  });
}

Outcome bridgeRawImageToWorldPoint(float rawX, float rawY, const FishEyeCalibrationParam* param,
                                   float* Xw, float* Yw, float* Zw, Failure* failure) noexcept {
  return guarded(failure, [&] { return RawImageToWorldPoint(rawX, rawY, *param, *Xw, *Yw, *Zw); });
}

Outcome bridgeCorrectedImageToWorldPoint(float x, float y, float cx, float cy,
                                         const FishEyeCalibrationParam* param, float* Xw, float* Yw,
                                         float* Zw, Failure* failure) noexcept {
  return guarded(failure,
                 [&] { return CorrectedImageToWorldPoint(x, y, cx, cy, *param, *Xw, *Yw, *Zw); });
}

Outcome bridgeCroppingImage(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight,
                            int bitCount, unsigned char* dst, ImageLong dstWidth,
                            ImageLong dstHeight, Failure* failure) noexcept {
  return guarded(failure, [&] {
    CroppingImage(src, srcWidth, srcHeight, bitCount, dst, dstWidth, dstHeight);
    return true;
  });
}

Outcome bridgeHandEyeCalibration(const PointList* points, double* params, double* errorX,
                                 double* errorY, Failure* failure) noexcept {
  return guarded(failure,
                 [&] { return HandEyeCalibration(copied(*points), params, *errorX, *errorY); });
}

Outcome bridgeGetPerspectiveTransformationParam(const PointList* points, double* params,
                                                double* value1, double* value2,
                                                Failure* failure) noexcept {
  return guarded(failure, [&] {
    return GetPerspectiveTransformationParam(copied(*points), params, *value1, *value2);
  });
}

Outcome bridgeGetCommonPoints(const PointList* first, const PointList* second, int idCount,
                              Append append, void* firstCommon, void* secondCommon,
                              Failure* failure) noexcept {
  return guarded(failure, [&] {
    for (const stitching::CommonPoint& shared : stitching::commonPoints(
             {first->points, first->count}, {second->points, second->count}, idCount)) {
      const bool isFirst = shared.camera == stitching::CameraOfPair::kFirst;
      if (!append(isFirst ? firstCommon : secondCommon, shared.point)) {
        throw std::bad_alloc();
      }
    }
    return true;
  });
}

Outcome bridgeComputeStitchedImageSize(const CameraView* first, const CameraView* second,
                                       ImageLong* width, ImageLong* height, int* bits,
                                       Failure* failure) noexcept {
  return guarded(failure, [&] {
    return ComputeStitchedImageSize(first->image, first->width, first->height, first->bits,
                                    *first->param, copied(first->points), second->image,
                                    second->width, second->height, second->bits, *second->param,
                                    copied(second->points), *width, *height, *bits);
  });
}

Outcome bridgeFishEyeImageStitching(const CameraView* first, const CameraView* second,
                                    unsigned char* stitched, ImageLong width, ImageLong height,
                                    int bits, DualFishEyeCalibrationParam* dual,
                                    Failure* failure) noexcept {
  return guarded(failure, [&] {
    return FishEyeImageStitching(first->image, first->width, first->height, first->bits,
                                 *first->param, copied(first->points), second->image, second->width,
                                 second->height, second->bits, *second->param,
                                 copied(second->points), stitched, width, height, bits, *dual);
  });
}

Outcome bridgeDualCamCroppingImage(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight,
                                   int bitCount, int cropLeft, int cropTop,
                                   DualFishEyeCalibrationParam* dual, unsigned char* dst,
                                   ImageLong dstWidth, ImageLong dstHeight,
                                   Failure* failure) noexcept {
  return guarded(failure, [&] {
    DualCam_CroppingImage(src, srcWidth, srcHeight, bitCount, cropLeft, cropTop, *dual, dst,
                          dstWidth, dstHeight);
    return true;
  });
}

Outcome bridgeDualCamWorldToSecondCorrectedImagePoint(float Xw, float Yw, float Zw,
                                                      const DualFishEyeCalibrationParam* dual,
                                                      float* u, float* v,
                                                      Failure* failure) noexcept {
  return guarded(
      failure, [&] { return DualCam_WorldToSecondCorrectedImagePoint(Xw, Yw, Zw, *dual, *u, *v); });
}

Outcome bridgeDualCamCorrectedImageToWorldPoint(float u, float v,
                                                const DualFishEyeCalibrationParam* dual, float* Xw,
                                                float* Yw, float* Zw, Failure* failure) noexcept {
  return guarded(failure,
                 [&] { return DualCam_CorrectedImageToWorldPoint(u, v, *dual, *Xw, *Yw, *Zw); });
}

}  // namespace fisheye_calibration::visual_cxx
