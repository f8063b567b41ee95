// What `stitch` writes besides the stitched picture and its record.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "checks/finding.h"
#include "geometry/stitch_agreement.h"
#include "geometry/stitch_pair.h"
#include "geometry/stitched_canvas.h"
#include "report_pages/stitch_page.h"

namespace fisheye_calibration::program {

// The seam over the canvas, with the rows that are added below and cut out as the stitched picture
// is: of the same size.
cv::Mat seamPicture(const cv::Mat& canvas, StitchPair& pair, const SharedPoints& shared,
                    const std::vector<Agreement>& agreement, const std::optional<Crop>& crop,
                    int addedRows);

// Writes the page, completed with the seam of the pair and the findings, unless `path` is empty.
// Cameras that do not agree need it most, so it does not wait for the other files.
void writeStitchReport(const std::filesystem::path& path, StitchPage page, StitchPair& pair,
                       const SharedPoints& shared, const Findings& findings);

// Reports all findings and fails with the first that makes the stitch impossible or, unless that is
// forced, with the first that makes it untrustworthy. Returns whether it is to be trusted.
// `hasReport`: the report has been written in any case.
bool reportFindings(const Findings& findings, bool force, std::ostream& messages,
                    bool hasReport = false);

}  // namespace fisheye_calibration::program
