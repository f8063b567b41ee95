// The 21 functions of the public header with their exact types, spelled out without the header's
// own alias: a changed parameter does not compile. Also read with Visual C++'s rules, to see the
// names.
#include "fisheye_calibration.h"

namespace {

#if defined(_WIN32)
typedef long Long;
#else
typedef int Long;
#endif

typedef unsigned char Byte;
typedef std::vector<CalibrationPoint> Points;
typedef FishEyeCalibrationParam Camera;
typedef DualFishEyeCalibrationParam Dual;

typedef void (*AnyFunction)();

// The layout that hosts were compiled against, in independent numbers: the header's own checks may
// be edited together with a record.
static_assert(sizeof(ImageLong) == 4 && sizeof(Long) == 4, "widths and heights are 32-bit");
static_assert(sizeof(CalibrationPoint) == 64 && alignof(CalibrationPoint) == 8, "a point's layout");
static_assert(sizeof(Camera) == 232 && alignof(Camera) == 8, "a camera's layout");
static_assert(sizeof(Dual) == 28 && alignof(Dual) == 4, "a stitched image's layout");

// Takes a function of exactly this type.
template <class Function>
AnyFunction address(Function* function) {
  return reinterpret_cast<AnyFunction>(function);
}

}  // namespace

// The names that the functions are called under end up in the object file.
extern const AnyFunction publicFunctions[];
const AnyFunction publicFunctions[] = {
    address<bool(Byte*, Long, Long, int, Points&, Long, Long, Camera&, double&)>(
        SingleCamCalibration),
    address<bool(const char*, Camera)>(SaveCalibrationParam),
    address<bool(const char*, Camera&)>(LoadCalibrationParam),
    address<bool(Byte*, Long, Long, int, Camera, Byte*, Long, Long, Byte*)>(SingleCamCorrected),
    address<bool(float, float, Camera, float&, float&)>(RawImageToCorrectedImagePoint),
    address<bool(float, float, float, Camera, float&, float&)>(WorldToRawImagePoint),
    address<bool(float, float, float, Camera, float, float, float&, float&)>(
        WorldToCorrectedImagePoint),
    address<bool(float, float, float, Camera, float, float, float&, float&)>(
        WorldToSecondCorrectedImagePoint),
    address<bool(float, float, Camera, float&, float&, float&)>(RawImageToWorldPoint),
    address<bool(float, float, float, float, Camera, float&, float&, float&)>(
        CorrectedImageToWorldPoint),
    address<void(Byte*, Long, Long, int, Byte*, Long, Long)>(CroppingImage),
    address<bool(Points, double*, double&, double&)>(HandEyeCalibration),
    address<bool(Points, double*, double&, double&)>(GetPerspectiveTransformationParam),
    address<void(Points, Points, int, Points&, Points&)>(GetCommonPoints),
    address<bool(Byte*, Long, Long, int, Camera, Points, Byte*, Long, Long, int, Camera, Points,
                 Long&, Long&, int&)>(ComputeStitchedImageSize),
    address<bool(Byte*, Long, Long, int, Camera, Points, Byte*, Long, Long, int, Camera, Points,
                 Byte*, Long, Long, int, Dual&)>(FishEyeImageStitching),
    address<bool(const char*, Dual)>(SaveDualCamerasCalibrationParam),
    address<bool(const char*, Dual&)>(LoadDualCamerasCalibrationParam),
    address<void(Byte*, Long, Long, int, int, int, Dual&, Byte*, Long, Long)>(
        DualCam_CroppingImage),
    address<bool(float, float, float, Dual, float&, float&)>(
        DualCam_WorldToSecondCorrectedImagePoint),
    address<bool(float, float, Dual, float&, float&, float&)>(DualCam_CorrectedImageToWorldPoint),
};
