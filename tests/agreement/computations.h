// The computations by which the systems are compared. All inputs come from generators that are the
// same everywhere.
#pragma once

#include "agreement/results.h"
#include "fisheye_calibration.h"

namespace agreement {

void addMaps(Results& results);
void addPictures(Results& results);
void addStitchedPictures(Results& results);
void addConversions(Results& results);
void addSolver(Results& results);
void addRegistration(Results& results);

// Records with numbers of all kinds, for the parameter files.
FishEyeCalibrationParam sampleCamera();
DualFishEyeCalibrationParam sampleDual();

// The bytes of a record without the filler between its fields.
void addRecord(Results& results, const std::string& name, const FishEyeCalibrationParam& param);
void addRecord(Results& results, const std::string& name, const DualFishEyeCalibrationParam& dual);

}  // namespace agreement
