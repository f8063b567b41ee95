#include "commands/calibration_warnings.h"

#include <cstddef>
#include <ostream>

#include "base/failure.h"
#include "checks/input_checks.h"
#include "checks/result_checks.h"
#include "reports/picture_report.h"

namespace fisheye_calibration::program {

void Warnings::add(const std::string& text, const char* severity) {
  messages_ << severity << ": " << text << "\n";
  texts_.push_back(text);
}

void warnOfPoints(const CalibrationInputs& inputs, SolverChoice solver, Warnings& warnings) {
  for (const TargetView& view : inputs.views) {
    const std::string prefix = inputs.views.size() == 1 ? "" : view.name + ": ";
    Findings findings = checkInput(view.points, inputs.image);
    if (solver == SolverChoice::kLibrary) {
      const Findings ofReach = checkReach(view.points, inputs.image);
      findings.insert(findings.end(), ofReach.begin(), ofReach.end());
    }
    for (const Finding& finding : findings) {
      if (finding.severity == Severity::kImpossible) {
        failBadInput(prefix + finding.text);
      }
      warnings.add(prefix + finding.text);
    }
  }
}

void warnOfWrongOnes(const RobustCamera& robust, const RobustRequest& request, Warnings& warnings) {
  const char* const what = request.keepAll ? " (used all the same)" : " (left out)";
  for (std::size_t j = 0; j < request.views.size(); ++j) {
    const std::vector<int> ids = wrongIds(robust.solved, request.views, j);
    if (!ids.empty()) {
      warnings.add(request.views[j].name + ": " + namedPoints(ids) +
                   (ids.size() == 1 ? " contradicts" : " contradict") + " the other points" + what);
    }
  }
  for (const std::size_t j : robust.solved.wrongViews) {
    warnings.add(request.views[j].name + " contradicts the other views" + what);
  }
}

bool checkChosen(const ChosenCamera& chosen, const RobustRequest& request, Warnings& warnings) {
  const Findings findings = checkResult(chosen.result, request.image);
  for (const Finding& finding : findings) {
    const bool impossible = finding.severity == Severity::kImpossible;
    warnings.add(finding.text, impossible ? "not to be trusted" : "warning");
  }
  const PictureWish& wish = request.picture;
  if (!wish.size && !wish.bed && !showsTarget(chosen.result)) {
    warnings.add("the corrected picture does not show the whole target");
  }
  return !anyImpossible(findings);
}

void warnOfBed(const SeenShares& seen, Warnings& warnings) {
  const std::string missing = describeMissing(seen, " (a finer --resolution shows more)");
  if (seen.nothingShown()) {
    failJob("the corrected picture would show nothing of --bed: " + missing);
  }
  if (!missing.empty()) {
    warnings.add("of --bed, " + missing);
  }
}

}  // namespace fisheye_calibration::program
