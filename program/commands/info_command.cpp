#include "commands/info_command.h"

#include <memory>
#include <ostream>
#include <string>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "checks/finding.h"
#include "checks/record_checks.h"
#include "commands/declared_options.h"
#include "files/camera_file.h"
#include "files/camera_notes.h"
#include "reports/calibration_report.h"

namespace fisheye_calibration::program {
namespace {

struct InfoOptions {
  std::filesystem::path camera;
};

// What `calibrate` noted along with the record, if anything.
std::string describeNotes(const CameraNotes& notes) {
  if (notes.outdated) {
    return "The program's notes in it are about another record\n";
  }
  std::string text;
  if (notes.corrected) {
    text += "Made for a corrected picture of " + sizeText(*notes.corrected) + "\n";
  }
  if (notes.insideTarget && notes.onBed) {
    text += "Bed error (95 %): " + roundedToTwo(*notes.insideTarget) + " mm inside the target, " +
            roundedToTwo(*notes.onBed) + " mm on the bed\n";
  }
  return text;
}

int run(const InfoOptions& options, const Streams& streams) {
  const CameraFile camera = loadCamera(options.camera);
  const std::string name = nameOf(options.camera);
  streams.out << name << "\n" << describeRecord(camera.param, streams.verbose) << std::flush;
  streams.out << describeNotes(loadNotes(options.camera));
  for (const std::string& complaint : camera.complaints) {
    streams.messages << complaint << "\n";
  }
  const Findings findings = checkRecord(camera.param);
  for (const Finding& finding : findings) {
    const bool impossible = finding.severity == Severity::kImpossible;
    streams.messages << name << ": " << (impossible ? "impossible: " : "doubtful: ") << finding.text
                     << "\n";
  }
  if (camera.complaints.empty() && findings.empty()) {
    streams.out << "Nothing in it is impossible.\n";
  }
  return camera.complaints.empty() && !anyImpossible(findings) ? kExitOk : kExitJobFailed;
}

}  // namespace

Command addInfoCommand(CLI::App& app) {
  const auto options = std::make_shared<InfoOptions>();
  CLI::App* command =
      addCommand(app, "info", "Show a camera's parameter file and what in it is impossible");
  addPath(*command, "camera", options->camera, "the camera's parameter file").required();
  setFooter(*command, "Example:\n  fisheye-calibration info camera.ini");
  return {command, [options](const Streams& streams) { return run(*options, streams); }, true};
}

}  // namespace fisheye_calibration::program
