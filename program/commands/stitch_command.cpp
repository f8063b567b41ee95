#include "commands/stitch_command.h"

#include <memory>
#include <new>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/frame_buffer.h"
#include "base/text.h"
#include "checks/agreement_checks.h"
#include "checks/checked_camera.h"
#include "checks/stitch_checks.h"
#include "commands/declared_options.h"
#include "commands/option_values.h"
#include "commands/stitch_outputs.h"
#include "commands/stitch_values.h"
#include "drawing/grid_overlay.h"
#include "files/dual_file.h"
#include "files/output_files.h"
#include "files/output_paths.h"
#include "files/picture_file.h"
#include "files/points_csv.h"
#include "geometry/conversions.h"
#include "geometry/metric_picture.h"
#include "geometry/stitch_agreement.h"
#include "geometry/stitch_pair.h"
#include "geometry/stitched_canvas.h"
#include "geometry/whole_datum.h"
#include "reports/agreement_report.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

struct StitchOptions {
  std::string left;   // "frame,camera.ini,points.csv"
  std::string right;  // the same
  fs::path output;
  fs::path dual;
  std::string crop;  // "X,Y,WxH"
  fs::path seam;
  fs::path report;
  std::string grid;  // distance of the lines, world units
  bool force = false;
};

void checkOutputs(const StitchOptions& options, const CameraFiles& left, const CameraFiles& right) {
  struct Output {
    const char* option;
    const fs::path& path;
    bool picture;
  };
  std::vector<Output> outputs = {{"-o", options.output, true}, {"--dual", options.dual, false}};
  if (!options.seam.empty()) {
    outputs.push_back({"--seam", options.seam, true});
  }
  if (!options.report.empty()) {
    outputs.push_back({"--report", options.report, false});
  }
  std::vector<fs::path> taken = {left.frame,  left.camera,  left.points,
                                 right.frame, right.camera, right.points};
  for (const Output& output : outputs) {
    requireWritable(output.option, output.path);
    if (output.picture) {
      requirePictureName(output.option, output.path);
    }
    for (const fs::path& other : taken) {
      if (isSamePath(output.path, other)) {
        failBadInput(std::string(output.option) + ": " + nameOf(output.path) + " is named twice");
      }
    }
    taken.push_back(output.path);
  }
}

StitchCamera readCamera(const CameraFiles& files, bool force, std::ostream& messages) {
  FrameBuffer frame = toBuffer(readFrame(files.frame, messages));
  const CheckedCamera camera = loadCheckedCamera(files.camera, force, messages);
  requireFrameSize(camera, files.camera, nameOf(files.frame), frame.size, force, messages);
  return {.cameraName = nameOf(files.camera),
          .pointsName = nameOf(files.points),
          .frame = std::move(frame),
          .param = camera.param,
          .corrected = camera.corrected,
          .points = readPoints(files.points)};
}

void requireInside(const Crop& crop, const Size& canvas) {
  if (crop.left <= canvas.width - crop.size.width && crop.top <= canvas.height - crop.size.height) {
    return;
  }
  failBadInput("--crop: it reaches beyond the stitched picture of " + sizeText(canvas));
}

void describe(const StitchOptions& options, const DualFishEyeCalibrationParam& dual,
              std::ostream& out) {
  out << "Stitched picture: " << nameOf(options.output) << ", " << dual.StdImageWidth << "x"
      << dual.StdImageHeight << ", " << shortest(dual.Pixel) << " world units a pixel\n"
      << "Its record: " << nameOf(options.dual)
      << "; the picture's row from the top is the mapped v";
  const int offset = pictureRowOffset(dual);
  if (offset != 0) {
    out << signedTerm(offset);
  }
  out << "\n";
  if (!options.seam.empty()) {
    out << "Seam: " << nameOf(options.seam) << " (blue: the blend begins, red: it ends; ring and "
        << "disc: a shared point in the left and the right view)\n";
  }
  if (!options.report.empty()) {
    out << "Report: " << nameOf(options.report) << "\n";
  }
}

// Where the datum went and what that leaves.
void describeDatum(const DualFishEyeCalibrationParam& exact, const WholeDatum& whole, bool cropped,
                   std::ostream& out) {
  if (whole.record.DatumPtXw == exact.DatumPtXw && whole.record.DatumPtYw == exact.DatumPtYw) {
    return;
  }
  out << "Its datum: (" << shortest(whole.record.DatumPtXw) << ", "
      << shortest(whole.record.DatumPtYw) << ") instead of (" << shortest(exact.DatumPtXw) << ", "
      << shortest(exact.DatumPtYw)
      << "), because the library reads it back in whole numbers; points mapped with the file are "
         "off by at most "
      << fixed(whole.rest, 4) << " mm";
  if (whole.addedRows > 0 && !cropped) {
    out << "; " << whole.addedRows << " black rows were added below the picture for it";
  }
  out << "\n";
}

struct Stitched {
  FrameBuffer canvas;
  DualFishEyeCalibrationParam record{};
};

Stitched stitchedFrames(StitchPair& pair, const fs::path& left, const fs::path& right) {
  try {
    Stitched stitched = {.canvas = newCanvas(pair)};
    stitched.record = stitchOnto(stitched.canvas, pair);
    return stitched;
  } catch (const cv::Exception& error) {
    failJob(nameOf(left) + " and " + nameOf(right) + " cannot be stitched (" + error.err + ")");
  } catch (const std::bad_alloc&) {
    failJob(nameOf(left) + " and " + nameOf(right) + ": not enough memory to stitch them");
  }
}

Findings findingsOn(const StitchPair& pair, const SharedPoints& shared, const fs::path& left,
                    const fs::path& right) {
  Findings findings = checkStitch(pair, shared);
  if (isSameFile(left, right)) {
    addUntrusted(findings, FindingKind::kSameCamera,
                 nameOf(left) + " and " + nameOf(right) + " are the same frame");
  }
  return findings;
}

// With the bed's lines unless their distance is 0.
cv::Mat pictureOf(const FrameBuffer& canvas, const DualFishEyeCalibrationParam& dual,
                  double gridSpacing) {
  cv::Mat picture = toPicture(canvas);
  if (gridSpacing > 0) {
    drawGrid(picture, gridOver(metricPicture(dual), gridSpacing));
  }
  return picture;
}

int run(const StitchOptions& options, const Streams& streams) {
  const CameraFiles left = parseFiles("--left", options.left);
  const CameraFiles right = parseFiles("--right", options.right);
  const std::optional<Crop> crop =
      options.crop.empty() ? std::nullopt : std::optional(parseCrop(options.crop));
  const double gridSpacing =
      options.grid.empty() ? 0 : static_cast<double>(parsePositive("--grid", options.grid));
  checkOutputs(options, left, right);
  StitchPair pair = {.left = readCamera(left, options.force, streams.messages),
                     .right = readCamera(right, options.force, streams.messages)};
  const SharedPoints shared = sharedPoints(pair);
  Findings findings = findingsOn(pair, shared, left.frame, right.frame);
  bool trusted = reportFindings(findings, options.force, streams.messages);

  streams.progress << "stitching by " << shared.left.size() << " shared points ..." << std::endl;
  auto [canvas, exact] = stitchedFrames(pair, left.frame, right.frame);
  const std::vector<Agreement> agreement = agreementAt(pair, shared, exact);
  streams.out << describeAgreement(agreement, static_cast<double>(exact.Pixel)) << std::flush;
  const WholeDatum whole = withWholeDatum(exact);
  DualFishEyeCalibrationParam dual = whole.record;
  if (crop) {
    requireInside(*crop, {dual.StdImageWidth, dual.StdImageHeight});
  }
  const Findings doubts = checkAgreement(agreement, shared.left.size());
  findings.insert(findings.end(), doubts.begin(), doubts.end());
  writeStitchReport(
      options.report,
      {.leftName = nameOf(left.frame),
       .rightName = nameOf(right.frame),
       .pictureName = nameOf(options.output),
       .pictureSize = crop ? crop->size : Size{dual.StdImageWidth, dual.StdImageHeight},
       .canvas = toPicture(canvas),
       .record = exact,
       .agreement = agreement,
       .trusted = trusted && !anyOf(doubts, Severity::kUntrusted)},
      pair, shared, findings);
  trusted =
      reportFindings(doubts, options.force, streams.messages, !options.report.empty()) && trusted;

  OutputFiles files;
  if (!options.seam.empty()) {
    stagePicture(files, options.seam,
                 seamPicture(toPicture(canvas), pair, shared, agreement, crop, whole.addedRows));
  }
  addRowsBelow(canvas, whole.addedRows);
  if (crop) {
    canvas = cutOut(canvas, *crop, dual);
  }
  stagePicture(files, options.output, pictureOf(canvas, dual, gridSpacing));
  stageDual(files, options.dual, dual);
  files.commit();

  streams.out << "\n";
  describe(options, dual, streams.out);
  describeDatum(exact, whole, crop.has_value(), streams.out);
  return trusted ? kExitOk : kExitJobFailed;
}

}  // namespace

Command addStitchCommand(CLI::App& app) {
  const auto options = std::make_shared<StitchOptions>();
  CLI::App* command =
      addCommand(app, "stitch", "Join the frames of two cameras over one bed in one picture");
  addOption(*command, "--left", options->left,
            "the first camera: its frame, parameter file and measured points")
      .typeName("FRAME,INI,CSV")
      .required();
  addOption(*command, "--right", options->right, "the second camera, which sees what lies right")
      .typeName("FRAME,INI,CSV")
      .required();
  addPath(*command, "-o,--output", options->output, "the stitched picture")
      .typeName("PICTURE")
      .required();
  addPath(*command, "--dual", options->dual, "the stitched picture's parameter file")
      .typeName("INI")
      .required();
  addOption(*command, "--crop", options->crop,
            "keep only this part, by its left column, top row and size (multiples of 4)")
      .typeName("X,Y,WxH");
  addOption(*command, "--grid", options->grid, "draw the bed's lines at multiples of this distance")
      .typeName("MM");
  addFlag(*command, "--force", options->force,
          "write a picture that is not to be trusted, use camera files in which something "
          "is impossible");
  addPath(*command, "--seam", options->seam,
          "write the picture with the blended strip and the shared points")
      .typeName("PICTURE");
  addPath(*command, "--report", options->report,
          "how well the views agree, as a page for a browser in one file")
      .typeName("HTML");
  setFooter(
      *command,
      "Points with the same PointId in both lists are the same point of the bed; at least four of "
      "them, well spread, align the views. Calibrate both cameras in one world with coordinates "
      "within 0 ... 10000 and a --corrected-size of twice the frame's size.\n\nExample:\n"
      "  fisheye-calibration stitch --left l.png,l.ini,l.csv --right r.png,r.ini,r.csv "
      "-o bed.png --dual dual.ini --seam seam.png");
  return {command, [options](const Streams& streams) { return run(*options, streams); }};
}

}  // namespace fisheye_calibration::program
