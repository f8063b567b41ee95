// The functions of fisheye_calibration.h under the names and by the rules of Visual C++. Compiled
// by clang for x86_64-pc-windows-msvc, with the private <vector> of include/, and linked into the
// DLL that MinGW-w64 builds; docs/visual-cxx.md explains how the parts fit together.
//
// This file is compiled without exceptions: what is raised for the host passes these frames without
// running destructors. So each function first releases the vectors that it was given by value.
#include <vector>

#include "fisheye_calibration.h"
#include "visual_cxx/bridge.h"
#include "visual_cxx/host_runtime.h"
#include "visual_cxx/raise.h"

// Refers to the floating-point support of Visual C++'s runtime, which every object that computes
// with floats names.
extern "C" const int _fltused = 0x9875;

using namespace fisheye_calibration::visual_cxx;

namespace {

using Points = std::vector<CalibrationPoint>;

// The vectors of debug builds begin with the address of a proxy, which begins with the address of
// the vector. In release builds the first word is the address of the first point, which begins with
// the number of the point; the words differ if there are points. (In debug builds they always
// differ.)
bool isOfDebugBuild(const Points& points) {
  return !points.empty() && *reinterpret_cast<const void* const*>(points.data()) == &points;
}

template <class... Vectors>
void refuseDebugBuild(const Vectors&... vectors) {
  if ((isOfDebugBuild(vectors) || ...)) {  // their memory is not ours to free, either
    raiseConstant(
        "fisheye_calibration: the host is built with _ITERATOR_DEBUG_LEVEL 1 or 2, as debug builds "
        "are by default, and its std::vector is another than the library's. Build it with /MD and "
        "_ITERATOR_DEBUG_LEVEL=0, or use the C interface or its wrapper fisheye_calibration.hpp, "
        "which work with every build.");
  }
}

[[noreturn, gnu::noinline]] void raise(Outcome outcome, const Failure& failure) {
  if (outcome == Outcome::kOutOfMemory) {
    raiseBadAlloc();
  }
  raiseRuntimeError(failure.text);
}

// Visual C++ leaves all but the lowest byte of the register undefined in which it returns a bool,
// but other languages that bind to these names read more as their truth values.
bool inWholeRegister(bool result) {
  unsigned whole = result;
  asm("" : "+r"(whole));  // the compiler no longer knows that one byte would do
  bool lowest = false;
  __builtin_memcpy(&lowest, &whole, 1);
  return lowest;
}

// The result of a call, or its exception once the vectors that were passed by value are released.
template <class... Vectors>
bool resultOf(Outcome outcome, const Failure& failure, Vectors&... byValue) {
  if (outcome != Outcome::kFalse && outcome != Outcome::kTrue) {
    (byValue.release(), ...);
    raise(outcome, failure);
  }
  return inWholeRegister(outcome == Outcome::kTrue);
}

PointList listOf(const Points& points) { return {points.data(), points.size()}; }

bool append(void* vector, const CalibrationPoint* point) {
  return static_cast<Points*>(vector)->append(*point);
}

}  // namespace

bool SingleCamCalibration(unsigned char* /*image*/, ImageLong width, ImageLong height,
                          int /*bitCount*/, Points& points, ImageLong correctedWidth,
                          ImageLong correctedHeight, FishEyeCalibrationParam& param,
                          double& reprojectionError) {
  refuseDebugBuild(points);
  Failure failure;
  return resultOf(bridgeSingleCamCalibration(width, height, points.data(), points.size(),
                                             correctedWidth, correctedHeight, fisheyeHostRand,
                                             &param, &reprojectionError, &failure),
                  failure);
}

bool SaveCalibrationParam(const char* path, FishEyeCalibrationParam param) {
  Failure failure;
  return resultOf(bridgeSaveCalibrationParam(path, &param, &failure), failure);
}

bool LoadCalibrationParam(const char* path, FishEyeCalibrationParam& param) {
  Failure failure;
  return resultOf(bridgeLoadCalibrationParam(path, &param, &failure), failure);
}

bool SaveDualCamerasCalibrationParam(const char* path, DualFishEyeCalibrationParam param) {
  Failure failure;
  return resultOf(bridgeSaveDualCamerasCalibrationParam(path, &param, &failure), failure);
}

bool LoadDualCamerasCalibrationParam(const char* path, DualFishEyeCalibrationParam& param) {
  Failure failure;
  return resultOf(bridgeLoadDualCamerasCalibrationParam(path, &param, &failure), failure);
}

bool SingleCamCorrected(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight, int bitCount,
                        FishEyeCalibrationParam param, unsigned char* dst, ImageLong dstWidth,
                        ImageLong dstHeight, unsigned char* mask) {
  Failure failure;
  return resultOf(bridgeSingleCamCorrected(src, srcWidth, srcHeight, bitCount, &param, dst,
                                           dstWidth, dstHeight, mask, &failure),
                  failure);
}

bool RawImageToCorrectedImagePoint(float rawX, float rawY, FishEyeCalibrationParam param, float& x,
                                   float& y) {
  Failure failure;
  return resultOf(bridgeRawImageToCorrectedImagePoint(rawX, rawY, &param, &x, &y, &failure),
                  failure);
}

bool WorldToRawImagePoint(float Xw, float Yw, float Zw, FishEyeCalibrationParam param, float& x,
                          float& y) {
  Failure failure;
  return resultOf(bridgeWorldToRawImagePoint(Xw, Yw, Zw, &param, &x, &y, &failure), failure);
}

bool WorldToCorrectedImagePoint(float Xw, float Yw, float Zw, FishEyeCalibrationParam param,
                                float cx, float cy, float& x, float& y) {
  Failure failure;
  return resultOf(bridgeWorldToCorrectedImagePoint(Xw, Yw, Zw, &param, cx, cy, &x, &y, &failure),
                  failure);
}

bool WorldToSecondCorrectedImagePoint(float Xw, float Yw, float Zw, FishEyeCalibrationParam param,
                                      float cx, float cy, float& x, float& y) {
  Failure failure;
  return resultOf(
      bridgeWorldToSecondCorrectedImagePoint(Xw, Yw, Zw, &param, cx, cy, &x, &y, &failure),
      failure);
}

bool RawImageToWorldPoint(float rawX, float rawY, FishEyeCalibrationParam param, float& Xw,
                          float& Yw, float& Zw) {
  Failure failure;
  return resultOf(bridgeRawImageToWorldPoint(rawX, rawY, &param, &Xw, &Yw, &Zw, &failure), failure);
}

bool CorrectedImageToWorldPoint(float x, float y, float cx, float cy, FishEyeCalibrationParam param,
                                float& Xw, float& Yw, float& Zw) {
  Failure failure;
  return resultOf(bridgeCorrectedImageToWorldPoint(x, y, cx, cy, &param, &Xw, &Yw, &Zw, &failure),
                  failure);
}

void CroppingImage(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight, int bitCount,
                   unsigned char* dst, ImageLong dstWidth, ImageLong dstHeight) {
  Failure failure;
  resultOf(
      bridgeCroppingImage(src, srcWidth, srcHeight, bitCount, dst, dstWidth, dstHeight, &failure),
      failure);
}

bool HandEyeCalibration(Points points, double* const params, double& errorX, double& errorY) {
  refuseDebugBuild(points);
  const PointList list = listOf(points);
  Failure failure;
  return resultOf(bridgeHandEyeCalibration(&list, params, &errorX, &errorY, &failure), failure,
                  points);
}

bool GetPerspectiveTransformationParam(Points points, double* const params, double& value1,
                                       double& value2) {
  refuseDebugBuild(points);
  const PointList list = listOf(points);
  Failure failure;
  return resultOf(
      bridgeGetPerspectiveTransformationParam(&list, params, &value1, &value2, &failure), failure,
      points);
}

void GetCommonPoints(Points first, Points second, int idCount, Points& firstCommon,
                     Points& secondCommon) {
  refuseDebugBuild(first, second, firstCommon, secondCommon);
  const PointList list1 = listOf(first);
  const PointList list2 = listOf(second);
  Failure failure;
  resultOf(
      bridgeGetCommonPoints(&list1, &list2, idCount, append, &firstCommon, &secondCommon, &failure),
      failure, first, second);
}

bool ComputeStitchedImageSize(unsigned char* image1, ImageLong width1, ImageLong height1, int bits1,
                              FishEyeCalibrationParam param1, Points points1, unsigned char* image2,
                              ImageLong width2, ImageLong height2, int bits2,
                              FishEyeCalibrationParam param2, Points points2,
                              ImageLong& stitchedWidth, ImageLong& stitchedHeight,
                              int& stitchedBits) {
  refuseDebugBuild(points1, points2);
  const CameraView first = {image1, width1, height1, bits1, &param1, listOf(points1)};
  const CameraView second = {image2, width2, height2, bits2, &param2, listOf(points2)};
  Failure failure;
  return resultOf(bridgeComputeStitchedImageSize(&first, &second, &stitchedWidth, &stitchedHeight,
                                                 &stitchedBits, &failure),
                  failure, points1, points2);
}

bool FishEyeImageStitching(unsigned char* image1, ImageLong width1, ImageLong height1, int bits1,
                           FishEyeCalibrationParam param1, Points points1, unsigned char* image2,
                           ImageLong width2, ImageLong height2, int bits2,
                           FishEyeCalibrationParam param2, Points points2, unsigned char* stitched,
                           ImageLong stitchedWidth, ImageLong stitchedHeight, int stitchedBits,
                           DualFishEyeCalibrationParam& dual) {
  refuseDebugBuild(points1, points2);
  const CameraView first = {image1, width1, height1, bits1, &param1, listOf(points1)};
  const CameraView second = {image2, width2, height2, bits2, &param2, listOf(points2)};
  Failure failure;
  return resultOf(bridgeFishEyeImageStitching(&first, &second, stitched, stitchedWidth,
                                              stitchedHeight, stitchedBits, &dual, &failure),
                  failure, points1, points2);
}

void DualCam_CroppingImage(unsigned char* src, ImageLong srcWidth, ImageLong srcHeight,
                           int bitCount, int cropLeft, int cropTop,
                           DualFishEyeCalibrationParam& dual, unsigned char* dst,
                           ImageLong dstWidth, ImageLong dstHeight) {
  Failure failure;
  resultOf(bridgeDualCamCroppingImage(src, srcWidth, srcHeight, bitCount, cropLeft, cropTop, &dual,
                                      dst, dstWidth, dstHeight, &failure),
           failure);
}

bool DualCam_WorldToSecondCorrectedImagePoint(float Xw, float Yw, float Zw,
                                              DualFishEyeCalibrationParam dual, float& u,
                                              float& v) {
  Failure failure;
  return resultOf(
      bridgeDualCamWorldToSecondCorrectedImagePoint(Xw, Yw, Zw, &dual, &u, &v, &failure), failure);
}

bool DualCam_CorrectedImageToWorldPoint(float u, float v, DualFishEyeCalibrationParam dual,
                                        float& Xw, float& Yw, float& Zw) {
  Failure failure;
  return resultOf(bridgeDualCamCorrectedImageToWorldPoint(u, v, &dual, &Xw, &Yw, &Zw, &failure),
                  failure);
}
