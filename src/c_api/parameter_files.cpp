#include "params/parameter_files.h"

#include "c_api/arguments.h"
#include "c_api/records.h"

namespace fisheye_calibration::c_api {
namespace {

template <class Record, class Saved>
fcal_status save(const char* path, const Record* record, const char* name,
                 bool (*saveFile)(const platform::ProfilePath&, const Saved&)) {
  required(path, "path");
  if (!saveFile({path, platform::PathEncoding::kUtf8}, recordOf(required(record, name)))) {
    return withoutResult("path", "the file cannot be written");
  }
  return FCAL_OK;
}

template <class Record, class Loaded>
fcal_status load(const char* path, Record* record, const char* name,
                 bool (*loadFile)(const platform::ProfilePath&, Loaded&)) {
  required(path, "path");
  Loaded loaded{};
  required(record, name);
  const bool isAnyThere = loadFile({path, platform::PathEncoding::kUtf8}, loaded);
  store(loaded, *record);
  return isAnyThere ? FCAL_OK : withoutResult("path", "the file holds no such parameters");
}

}  // namespace
}  // namespace fisheye_calibration::c_api

using namespace fisheye_calibration;
using namespace fisheye_calibration::c_api;

fcal_status fcal_save_camera(const char* path, const fcal_camera* camera) {
  return guarded([&] { return save(path, camera, "camera", params::saveCameraFile); });
}

fcal_status fcal_load_camera(const char* path, fcal_camera* camera) {
  return guarded([&] { return load(path, camera, "camera", params::loadCameraFile); });
}

fcal_status fcal_save_dual(const char* path, const fcal_dual* dual) {
  return guarded([&] { return save(path, dual, "dual", params::saveDualCameraFile); });
}

fcal_status fcal_load_dual(const char* path, fcal_dual* dual) {
  return guarded([&] { return load(path, dual, "dual", params::loadDualCameraFile); });
}
