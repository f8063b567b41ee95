#include "commands/info_command.h"

#include <ostream>
#include <vector>

#include "base/failure.h"
#include "checks/finding.h"
#include "checks/record_checks.h"
#include "files/camera_file.h"
#include "reports/calibration_report.h"

namespace fisheye_calibration::program {

int runInfo(const std::string& path, std::ostream& out, std::ostream& messages) {
  const CameraFile camera = loadCamera(path);
  out << path << "\n" << describeRecord(camera.param) << std::flush;
  for (const std::string& complaint : camera.complaints) {
    messages << complaint << "\n";
  }
  const std::vector<Finding> findings = checkRecord(camera.param);
  for (const Finding& finding : findings) {
    const bool impossible = finding.severity == Severity::kImpossible;
    messages << path << ": " << (impossible ? "impossible: " : "doubtful: ") << finding.text
             << "\n";
  }
  if (camera.complaints.empty() && findings.empty()) {
    out << "Nothing in it is impossible.\n";
  }
  return camera.complaints.empty() && !anyImpossible(findings) ? kExitOk : kExitJobFailed;
}

}  // namespace fisheye_calibration::program
