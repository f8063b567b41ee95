#include "page/saved_files.h"

#include <system_error>

#include "base/failure.h"
#include "base/file_path.h"
#include "drawing/seam_overlay.h"
#include "files/camera_file.h"
#include "files/dual_file.h"
#include "files/output_files.h"
#include "files/points_csv.h"
#include "files/read_file.h"
#include "geometry/stitch_agreement.h"
#include "page/request_checks.h"
#include "report_pages/calibration_page.h"
#include "report_pages/stitch_page.h"
#include "reports/calibration_json.h"
#include "reports/calibration_notes.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

void stageCamera(OutputFiles& files, const fs::path& path, const CalibrationOutcome& outcome) {
  stageCamera(files, path, outcome.chosen.result.param, notesOf(reportOf(outcome)));
}

// A folder of its own among the system's temporary ones, gone at the end.
class TemporaryFolder {
 public:
  TemporaryFolder() : path_(fs::temp_directory_path() / ("fisheye-calibration-" + newToken())) {
    fs::create_directory(path_);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  fs::path file(const char* name) const { return path_ / name; }

 private:
  fs::path path_;
};

// The library writes parameter files only to a path.
template <class Stage>
std::string textOf(const char* name, const Stage& stage) {
  const TemporaryFolder folder;
  OutputFiles files;
  stage(files, folder.file(name));
  files.commit();
  return readFile(folder.file(name));
}

}  // namespace

std::string cameraFileName(std::size_t source, std::size_t sources) {
  return "camera" + (sources > 1 ? std::to_string(source + 1) : std::string()) + ".ini";
}

SavedFiles saveFiles(const fs::path& folder, const Outcomes& outcomes,
                     const std::shared_ptr<const StitchOutcome>& stitch) {
  OutputFiles files;
  SavedFiles saved;
  const auto pathOf = [&](const std::string& name) {
    saved.names.push_back(name);
    return folder / name;
  };
  for (std::size_t i = 0; i < outcomes.size(); ++i) {
    if (!outcomes[i]) {
      failJob("calibrate first");
    }
    const std::string suffix = outcomes.size() > 1 ? std::to_string(i + 1) : "";
    const std::string camera = cameraFileName(i, outcomes.size());
    stageCamera(files, pathOf(camera), *outcomes[i]);
    files.stage(pathOf("points" + suffix + ".csv"), pointsText(*outcomes[i]));
    files.stage(pathOf("report" + suffix + ".html"), reportPage(*outcomes[i], camera));
  }
  if (stitch && stitch->trusted) {
    stageDual(files, pathOf("dual.ini"), stitch->whole.record);
    files.stage(pathOf("dual.html"), dualPage(*stitch));
  } else if (outcomes.size() > 1) {
    std::error_code ignored;
    saved.note = stitch ? "no dual.ini, because the cameras do not agree well enough"
                        : "no dual.ini, because the two pictures are not joined";
    if (fs::exists(folder / "dual.ini", ignored) || fs::exists(folder / "dual.html", ignored)) {
      saved.note += "; what is there of both cameras is of an earlier calibration";
    }
  }
  files.commit();
  return saved;
}

std::string cameraText(const CalibrationOutcome& outcome) {
  return textOf("camera.ini", [&](OutputFiles& files, const fs::path& path) {
    stageCamera(files, path, outcome);
  });
}

std::string pointsText(const CalibrationOutcome& outcome) {
  return formatPoints(outcome.request.views[outcome.request.bedView].points);
}

std::string reportText(const CalibrationOutcome& outcome) { return formatJson(reportOf(outcome)); }

std::string reportPage(const CalibrationOutcome& outcome, const std::string& camera) {
  const CalibrationReport report = reportOf(outcome);
  return calibrationPage({.report = report,
                          .cameraName = camera,
                          .trusted = outcome.trusted,
                          .bedPicture = outcome.bedPicture});
}

std::string dualPage(const StitchOutcome& stitch) {
  StitchPair pair = stitch.pair;
  DualFishEyeCalibrationParam record{};
  const cv::Mat canvas = stitchedPicture(pair, record);
  const SharedPoints shared = sharedPoints(pair);
  StitchPage page{.leftName = "camera 1",
                  .rightName = "camera 2",
                  .pictureName = "joined picture",
                  .pictureSize = {.width = canvas.cols, .height = canvas.rows},
                  .canvas = canvas,
                  .record = record,
                  .agreement = agreementAt(pair, shared, record),
                  .seam = seamRows(pair, shared),
                  .seamOffset = (canvas.rows - pair.left.viewSize().height) / 2,
                  .warnings = stitch.warnings,
                  .trusted = stitch.trusted};
  return stitchPage(page);
}

std::string dualText(const StitchOutcome& stitch) {
  return textOf("dual.ini", [&](OutputFiles& files, const fs::path& path) {
    stageDual(files, path, stitch.whole.record);
  });
}

}  // namespace fisheye_calibration::program
