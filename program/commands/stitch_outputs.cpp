#include "commands/stitch_outputs.h"

#include <ostream>

#include "base/failure.h"
#include "drawing/seam_overlay.h"
#include "files/output_files.h"

namespace fisheye_calibration::program {

cv::Mat seamPicture(const cv::Mat& canvas, StitchPair& pair, const SharedPoints& shared,
                    const std::vector<Agreement>& agreement, const std::optional<Crop>& crop,
                    int addedRows) {
  cv::Mat drawn = drawSeam(canvas, pair, shared, agreement);
  if (addedRows > 0) {
    drawn.push_back(cv::Mat(addedRows, drawn.cols, drawn.type(), cv::Scalar::all(0)));
  }
  if (crop) {
    return drawn({crop->left, crop->top, crop->size.width, crop->size.height});
  }
  return drawn;
}

bool reportFindings(const Findings& findings, bool force, std::ostream& messages, bool hasReport) {
  const auto reportAll = [&](Severity severity, const char* prefix) {
    for (const Finding& finding : findings) {
      if (finding.severity == severity) {
        messages << prefix << finding.text << "\n";
      }
    }
  };
  reportAll(Severity::kDoubtful, "warning: ");
  reportAll(Severity::kUntrusted, "not to be trusted: ");
  if (anyImpossible(findings)) {
    reportAll(Severity::kImpossible, "impossible: ");
    failBadInput("these frames cannot be stitched");
  }
  const bool trusted = !anyOf(findings, Severity::kUntrusted);
  if (!trusted && !force) {
    failJob(std::string("the result is not to be trusted; nothing was written") +
            (hasReport ? " but the report" : "") + " (--force writes it all the same)");
  }
  return trusted;
}

void writeStitchReport(const std::filesystem::path& path, StitchPage page, StitchPair& pair,
                       const SharedPoints& shared, const Findings& findings) {
  if (path.empty()) {
    return;
  }
  page.seam = seamRows(pair, shared);
  page.seamOffset = (page.canvas.rows - pair.left.viewSize().height) / 2;
  for (const Finding& finding : findings) {
    page.warnings.push_back(finding.text);
  }
  OutputFiles report;
  report.stage(path, stitchPage(page));
  report.commit();
}

}  // namespace fisheye_calibration::program
