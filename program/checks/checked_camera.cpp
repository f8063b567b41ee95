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
namespace {

void refuse(const std::string& complaint, bool force, std::ostream& messages) {
  if (!force) {
    failBadInput(complaint + " (--force goes on all the same)");
  }
  messages << "warning: " << complaint << "\n";
}

}  // namespace

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
  const CameraNotes notes = loadNotes(path);
  if (notes.outdated) {
    messages << "warning: " << name
             << ": its record has been replaced since the program noted the sizes and the accuracy "
                "of another one; the notes are ignored\n";
  }
  return {.param = camera.param, .image = notes.image, .corrected = notes.corrected};
}

void requireFrameSize(const CheckedCamera& loaded, const std::filesystem::path& camera,
                      const std::string& frame, const Size& size, bool force,
                      std::ostream& messages) {
  if (loaded.image && *loaded.image != size) {
    refuse(frame + ": " + sizeText(size) + " pixels, but " + nameOf(camera) +
               " was calibrated with " + sizeText(*loaded.image),
           force, messages);
  }
}

void requireFittingSize(const CheckedCamera& loaded, const std::filesystem::path& camera,
                        const Size& size, bool force, std::ostream& messages) {
  const std::string complaint = sizeComplaint(loaded.param, loaded.corrected, size);
  if (!complaint.empty()) {
    refuse(nameOf(camera) + ": " + complaint, force, messages);
  }
}

}  // namespace fisheye_calibration::program
