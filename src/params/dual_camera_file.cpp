// The parameter file of the frame that two cameras are stitched in.
#include "fisheye_calibration.h"
#include "params/record_file.h"

namespace {

using Frame = DualFishEyeCalibrationParam;
using params::Reading;

// The missing "t" is part of the file format.
constexpr const char* sectionName = "DualCamerasCalibraionParam";

constexpr std::array<params::Field<Frame>, 7> fields{{
    {"Pixel", &Frame::Pixel},
    {"StdImageWidth", &Frame::StdImageWidth},
    {"StdImageHeight", &Frame::StdImageHeight},
    {"DatumImagePtX", &Frame::DatumImagePtX},
    {"DatumImagePtY", &Frame::DatumImagePtY},
    // Hosts expect whole world units back, cut towards zero.
    {"DatumPtXw", &Frame::DatumPtXw, Reading::ThroughInteger},
    {"DatumPtYw", &Frame::DatumPtYw, Reading::ThroughInteger},
}};

}  // namespace

bool SaveDualCamerasCalibrationParam(const char* path, DualFishEyeCalibrationParam param) {
  params::saveRecord(path, sectionName, fields, param);
  return true;
}

bool LoadDualCamerasCalibrationParam(const char* path, DualFishEyeCalibrationParam& param) {
  params::loadRecord(path, sectionName, fields, param);
  return true;
}
