#include "host.h"
#include "runtime.h"

// Exceptions pass the frames of these functions, which all call others.
void checkUnwindData() {
  const void* const functions[] = {
      reinterpret_cast<const void*>(&SingleCamCalibration),
      reinterpret_cast<const void*>(&SaveCalibrationParam),
      reinterpret_cast<const void*>(&LoadCalibrationParam),
      reinterpret_cast<const void*>(&SaveDualCamerasCalibrationParam),
      reinterpret_cast<const void*>(&LoadDualCamerasCalibrationParam),
      reinterpret_cast<const void*>(&SingleCamCorrected),
      reinterpret_cast<const void*>(&RawImageToCorrectedImagePoint),
      reinterpret_cast<const void*>(&WorldToRawImagePoint),
      reinterpret_cast<const void*>(&WorldToCorrectedImagePoint),
      reinterpret_cast<const void*>(&WorldToSecondCorrectedImagePoint),
      reinterpret_cast<const void*>(&RawImageToWorldPoint),
      reinterpret_cast<const void*>(&CorrectedImageToWorldPoint),
      reinterpret_cast<const void*>(&CroppingImage),
      reinterpret_cast<const void*>(&HandEyeCalibration),
      reinterpret_cast<const void*>(&GetPerspectiveTransformationParam),
      reinterpret_cast<const void*>(&GetCommonPoints),
      reinterpret_cast<const void*>(&ComputeStitchedImageSize),
      reinterpret_cast<const void*>(&FishEyeImageStitching),
      reinterpret_cast<const void*>(&DualCam_CroppingImage),
      reinterpret_cast<const void*>(&DualCam_WorldToSecondCorrectedImagePoint),
      reinterpret_cast<const void*>(&DualCam_CorrectedImageToWorldPoint)};
  bool haveAll = true;
  for (const void* function : functions) haveAll = haveAll && host::hasUnwindData(function);
  host::check(haveAll, "all 21 functions have unwind data");
}
