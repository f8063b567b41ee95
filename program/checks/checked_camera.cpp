#include "checks/checked_camera.h"

#include <ostream>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "checks/record_checks.h"
#include "files/camera_file.h"
#include "files/camera_notes.h"
#include "files/ini_section.h"
#include "geometry/second_view.h"

namespace fisheye_calibration::program {

CheckedCamera loadCheckedCamera(const std::filesystem::path& path, bool force,
                                std::ostream& messages) {
  const CameraFile camera = loadCamera(path);
  const std::string name = nameOf(path);
  std::vector<std::string> impossible = camera.complaints;
  for (const Finding& finding : checkRecord(camera.param)) {
    const std::string text = name + ": " + finding.text;
    if (finding.severity == Severity::kDoubtful) {
      messages << "warning: " << text << "\n";
    } else {
      impossible.push_back(text);
    }
  }
  reportImpossible(impossible, name, force, messages);
  CheckedCamera checked{.param = camera.param, .corrected = loadNotes(path).corrected};
  if (checked.corrected && !sizeComplaint(camera.param, std::nullopt, *checked.corrected).empty()) {
    messages << "warning: " << name << ": it notes a corrected picture of "
             << sizeText(*checked.corrected)
             << ", to which its record does not belong; the note is ignored\n";
    checked.corrected.reset();
  }
  return checked;
}

void requireFittingSize(const CheckedCamera& loaded, const std::filesystem::path& camera,
                        const Size& size, bool force, std::ostream& messages) {
  const std::string complaint = sizeComplaint(loaded.param, loaded.corrected, size);
  if (complaint.empty()) {
    return;
  }
  const std::string text = nameOf(camera) + ": " + complaint;
  if (!force) {
    failBadInput(text + " (--force goes on all the same)");
  }
  messages << "warning: " << text << "\n";
}

}  // namespace fisheye_calibration::program
