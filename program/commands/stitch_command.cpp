#include "commands/stitch_command.h"

#include <array>
#include <cstddef>
#include <optional>
#include <ostream>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "base/text.h"
#include "checks/checked_camera.h"
#include "checks/finding.h"
#include "checks/stitch_checks.h"
#include "commands/option_values.h"
#include "drawing/grid_overlay.h"
#include "drawing/seam_overlay.h"
#include "files/dual_file.h"
#include "files/output_files.h"
#include "files/output_places.h"
#include "files/picture_file.h"
#include "files/points_csv.h"
#include "files/read_file.h"
#include "fisheye_calibration.h"
#include "geometry/conversions.h"
#include "geometry/metric_picture.h"
#include "geometry/stitch_agreement.h"
#include "geometry/stitch_pair.h"
#include "reports/agreement_report.h"

namespace fisheye_calibration::program {
namespace {

constexpr double kFarApart = 5;  // canvas pixels; more is plainly to be seen

using FileNames = std::array<std::string, 3>;  // frame, camera, points

struct Crop {
  int left = 0;
  int top = 0;
  Size size;
};

FileNames parseFiles(const std::string& option, const std::string& text) {
  const std::size_t first = text.find(',');
  const std::size_t second = first == std::string::npos ? first : text.find(',', first + 1);
  if (second == std::string::npos || text.find(',', second + 1) != std::string::npos) {
    failBadInput(option + ": give three files as FRAME,CAMERA.INI,POINTS.CSV, not \"" + text +
                 "\"");
  }
  return {text.substr(0, first), text.substr(first + 1, second - first - 1),
          text.substr(second + 1)};
}

Crop parseCrop(const std::string& text) {
  const std::size_t first = text.find(',');
  const std::size_t second = first == std::string::npos ? first : text.find(',', first + 1);
  if (second != std::string::npos) {
    const auto left = parseInteger(std::string_view(text).substr(0, first));
    const auto top = parseInteger(std::string_view(text).substr(first + 1, second - first - 1));
    if (left && top && *left >= 0 && *top >= 0) {
      const Size size = parseSize("--crop", text.substr(second + 1), 1, kLargestImageSide);
      if (size.width % 4 != 0 || size.height % 4 != 0) {
        failBadInput("--crop: width and height must be multiples of 4, not " +
                     text.substr(second + 1));
      }
      return {*left, *top, size};
    }
  }
  failBadInput("--crop: give left column, top row and size as X,Y,WIDTHxHEIGHT, not \"" + text +
               "\"");
}

void requirePlaces(const StitchOptions& options, const FileNames& left, const FileNames& right) {
  struct Output {
    const char* option;
    const std::string& path;
    bool picture;
  };
  std::vector<Output> outputs = {{"-o", options.output, true}, {"--dual", options.dual, false}};
  if (!options.seam.empty()) {
    outputs.push_back({"--seam", options.seam, true});
  }
  std::vector<std::string> taken(left.begin(), left.end());
  taken.insert(taken.end(), right.begin(), right.end());
  for (const Output& output : outputs) {
    requireWritablePlace(output.option, output.path);
    if (output.picture) {
      requirePictureName(output.option, output.path);
    }
    for (const std::string& other : taken) {
      if (output.path == other || isSameFile(output.path, other)) {
        failBadInput(std::string(output.option) + ": " + output.path + " is named twice");
      }
    }
    taken.push_back(output.path);
  }
}

StitchCamera readCamera(const FileNames& files, std::ostream& messages) {
  StitchCamera camera;
  camera.cameraName = files[1];
  camera.pointsName = files[2];
  camera.frame = toBuffer(readFrame(files[0]));
  camera.param = loadCheckedCamera(files[1], messages);
  camera.points = parsePoints(files[2], readFile(files[2]));
  return camera;
}

void tellBefore(const std::vector<Finding>& findings, std::ostream& messages) {
  std::optional<std::string> impossible;
  for (const Finding& finding : findings) {
    if (finding.severity != Severity::kImpossible) {
      messages << "warning: " << finding.text << "\n";
    } else if (!impossible) {
      impossible = finding.text;
    } else {
      messages << finding.text << "\n";
    }
  }
  if (impossible) {
    failBadInput(*impossible);
  }
}

FrameBuffer newCanvas(StitchPair& pair) {
  StitchCamera& l = pair.left;
  StitchCamera& r = pair.right;
  ImageLong width = 0;
  ImageLong height = 0;
  int bits = 0;
  if (!ComputeStitchedImageSize(l.frame.data(), l.frame.size.width, l.frame.size.height,
                                l.frame.bitCount, l.param, l.points, r.frame.data(),
                                r.frame.size.width, r.frame.size.height, r.frame.bitCount, r.param,
                                r.points, width, height, bits)) {
    failJob("the library could not pair the shared points");
  }
  if (width > kLargestImageSide || height > kLargestImageSide) {
    failJob("the stitched picture would have " + std::to_string(width) + "x" +
            std::to_string(height) + " pixels; the views do not fit together");
  }
  return blankBuffer({static_cast<int>(width), static_cast<int>(height)}, bits);
}

DualFishEyeCalibrationParam stitchOnto(FrameBuffer& canvas, StitchPair& pair) {
  StitchCamera& l = pair.left;
  StitchCamera& r = pair.right;
  DualFishEyeCalibrationParam dual{};
  if (!FishEyeImageStitching(l.frame.data(), l.frame.size.width, l.frame.size.height,
                             l.frame.bitCount, l.param, l.points, r.frame.data(),
                             r.frame.size.width, r.frame.size.height, r.frame.bitCount, r.param,
                             r.points, canvas.data(), canvas.size.width, canvas.size.height,
                             canvas.bitCount, dual)) {
    failJob("the library could not stitch the frames");
  }
  return dual;
}

void requireInside(const Crop& crop, const Size& canvas) {
  if (crop.left <= canvas.width - crop.size.width && crop.top <= canvas.height - crop.size.height) {
    return;
  }
  failBadInput("--crop: it reaches beyond the stitched picture of " + std::to_string(canvas.width) +
               "x" + std::to_string(canvas.height));
}

FrameBuffer cutOut(FrameBuffer& canvas, const Crop& crop, DualFishEyeCalibrationParam& dual) {
  FrameBuffer cut = blankBuffer(crop.size, canvas.bitCount);
  DualCam_CroppingImage(canvas.data(), canvas.size.width, canvas.size.height, canvas.bitCount,
                        crop.left, crop.top, dual, cut.data(), crop.size.width, crop.size.height);
  return cut;
}

void describe(const StitchOptions& options, const DualFishEyeCalibrationParam& dual,
              std::ostream& out) {
  out << "Stitched picture: " << options.output << ", " << dual.StdImageWidth << "x"
      << dual.StdImageHeight << ", " << shortest(dual.Pixel) << " world units a pixel\n"
      << "Its record: " << options.dual << "; the picture's row from the top is the mapped v";
  const int offset = pictureRowOffset(dual);
  if (offset != 0) {
    out << (offset < 0 ? " - " : " + ") << (offset < 0 ? -offset : offset);
  }
  out << "\n";
  if (!options.seam.empty()) {
    out << "Seam: " << options.seam << " (blue: the blend begins, red: it ends; ring and disc: a "
        << "shared point in the left and the right view)\n";
  }
}

}  // namespace

int runStitch(const StitchOptions& options, std::ostream& out, std::ostream& messages) {
  const FileNames leftFiles = parseFiles("--left", options.left);
  const FileNames rightFiles = parseFiles("--right", options.right);
  std::optional<Crop> crop;
  if (!options.crop.empty()) {
    crop = parseCrop(options.crop);
  }
  double gridSpacing = 0;  // 0: no grid
  if (!options.grid.empty()) {
    gridSpacing = static_cast<double>(parsePositive("--grid", options.grid));
  }
  requirePlaces(options, leftFiles, rightFiles);
  StitchPair pair{readCamera(leftFiles, messages), readCamera(rightFiles, messages)};
  const SharedPoints shared = sharedPoints(pair);
  tellBefore(checkStitch(pair, shared), messages);

  messages << "stitching by " << shared.left.size() << " shared points ..." << std::endl;
  FrameBuffer canvas = newCanvas(pair);
  if (crop) {
    requireInside(*crop, canvas.size);
  }
  DualFishEyeCalibrationParam dual = stitchOnto(canvas, pair);
  const std::vector<Agreement> agreement = agreementAt(pair, shared, dual);

  OutputFiles files;
  if (!options.seam.empty()) {
    cv::Mat drawn = drawSeam(toPicture(canvas), pair, shared, agreement);
    if (crop) {
      drawn = drawn({crop->left, crop->top, crop->size.width, crop->size.height});
    }
    files.stage(options.seam, encodePicture(options.seam, drawn));
  }
  if (crop) {
    canvas = cutOut(canvas, *crop, dual);
  }
  cv::Mat picture = toPicture(canvas);
  if (gridSpacing > 0) {
    drawGrid(picture, gridOver(metricPicture(dual), gridSpacing));
  }
  files.stage(options.output, encodePicture(options.output, picture));
  stageDual(files, options.dual, dual, messages);
  files.commit();

  describe(options, dual, out);
  out << "\n" << describeAgreement(agreement, static_cast<double>(dual.Pixel));
  const std::size_t left = shared.left.size() - agreement.size();
  if (left > 0) {
    messages << "warning: " << left << " shared points cannot be carried to the bed\n";
  }
  if (!(worstApart(agreement) <= kFarApart)) {
    messages << "warning: the cameras disagree by up to " << general(worstApart(agreement), 3)
             << " px; the stitched picture shows things double there\n";
  }
  return kExitOk;
}

}  // namespace fisheye_calibration::program
