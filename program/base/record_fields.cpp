#include "base/record_fields.h"

namespace fisheye_calibration::program {
namespace {

using Param = FishEyeCalibrationParam;

template <auto Member>
double valueOf(const Param& param) {
  return static_cast<double>(param.*Member);
}

constexpr const char* kFiller = "filler, not used by the model";
constexpr const char* kRotation = "rotation world -> camera, row by row";
constexpr const char* kHomography = "homography corrected -> second-corrected, row by row";

const RecordField kFields[] = {
    {"u0", "px", "principal point, x", valueOf<&Param::u0>},
    {"v0", "px", "principal point, y", valueOf<&Param::v0>},
    {"fx", "px", "focal length along x", valueOf<&Param::fx>},
    {"fy", "px", "focal length along y", valueOf<&Param::fy>},
    {"skewness", "px", "skew", valueOf<&Param::skewness>},
    {"k0", "", "lens curve, coefficient of theta^2", valueOf<&Param::k0>},
    {"k1", "", "lens curve, coefficient of theta^3", valueOf<&Param::k1>},
    {"k2", "", kFiller, valueOf<&Param::k2>},
    {"k3", "", kFiller, valueOf<&Param::k3>},
    {"k4", "", kFiller, valueOf<&Param::k4>},
    {"k5", "", kFiller, valueOf<&Param::k5>},
    {"R1", "", kRotation, valueOf<&Param::R1>},
    {"R2", "", kRotation, valueOf<&Param::R2>},
    {"R3", "", kRotation, valueOf<&Param::R3>},
    {"R4", "", kRotation, valueOf<&Param::R4>},
    {"R5", "", kRotation, valueOf<&Param::R5>},
    {"R6", "", kRotation, valueOf<&Param::R6>},
    {"R7", "", kRotation, valueOf<&Param::R7>},
    {"R8", "", kRotation, valueOf<&Param::R8>},
    {"R9", "", kRotation, valueOf<&Param::R9>},
    {"Rx", "rad", "the same rotation as a vector, x", valueOf<&Param::Rx>},
    {"Ry", "rad", "the same rotation as a vector, y", valueOf<&Param::Ry>},
    {"Rz", "rad", "the same rotation as a vector, z", valueOf<&Param::Rz>},
    {"Tx", "mm", "world origin in the camera's frame, x", valueOf<&Param::Tx>},
    {"Ty", "mm", "world origin in the camera's frame, y", valueOf<&Param::Ty>},
    {"Tz", "mm", "world origin in the camera's frame, depth", valueOf<&Param::Tz>},
    {"p1", "", kHomography, valueOf<&Param::p1>},
    {"p2", "", kHomography, valueOf<&Param::p2>},
    {"p3", "", kHomography, valueOf<&Param::p3>},
    {"p4", "", kHomography, valueOf<&Param::p4>},
    {"p5", "", kHomography, valueOf<&Param::p5>},
    {"p6", "", kHomography, valueOf<&Param::p6>},
    {"p7", "", kHomography, valueOf<&Param::p7>},
    {"p8", "", kHomography, valueOf<&Param::p8>},
    {"p9", "", kHomography, valueOf<&Param::p9>},
    {"Pixel", "mm/px", "size of a second-corrected pixel", valueOf<&Param::Pixel>},
    {"DatumPtXw", "mm", "world X in the corrected picture's centre", valueOf<&Param::DatumPtXw>},
    {"DatumPtYw", "mm", "world Y in the corrected picture's centre", valueOf<&Param::DatumPtYw>},
    {"ImageDx", "px", "shift after the homography, x", valueOf<&Param::ImageDx>},
    {"ImageDy", "px", "shift after the homography, y", valueOf<&Param::ImageDy>},
};

}  // namespace

std::span<const RecordField> recordFields() { return kFields; }

}  // namespace fisheye_calibration::program
