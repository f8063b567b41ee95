#include "commands/straighten_command.h"

#include <array>
#include <filesystem>
#include <opencv2/core.hpp>
#include <optional>
#include <ostream>
#include <system_error>
#include <vector>

#include "base/failure.h"
#include "files/output_files.h"
#include "files/output_places.h"
#include "files/picture_file.h"
#include "files/points_csv.h"
#include "files/read_file.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

// Where the library reads and writes.
constexpr const char* kInputPicture = "D:/CorrectedImage.bmp";
constexpr const char* kResultPicture = "D:/CorrectedImage2.bmp";

void prepareDrive() {
  std::error_code error;
#if !defined(_WIN32)
  fs::create_directory("D:", error);
  if (error) {
    failJob("the folder D: cannot be made here: " + error.message());
  }
#endif
  if (!fs::is_directory("D:/", error)) {
    failJob("there is no drive D:, on which the library keeps the pictures");
  }
}

std::vector<CalibrationPoint> readCorners(const std::string& path) {
  std::vector<CalibrationPoint> points = parsePoints(path, readFile(path));
  if (points.size() != 4) {
    failBadInput(path + ": " + std::to_string(points.size()) + " point(s); give exactly four");
  }
  const CalibrationPoint& first = points[0];
  const CalibrationPoint& last = points[3];
  if ((first.ImagePtX == last.ImagePtX && first.ImagePtY == last.ImagePtY) ||
      (first.Xw == last.Xw && first.Yw == last.Yw)) {
    failBadInput(path +
                 ": the first and the last point coincide; they are to lie on a diagonal, "
                 "which gives the scale");
  }
  return points;
}

std::optional<fs::file_time_type> writtenAt(const char* path) {
  std::error_code error;
  const fs::file_time_type time = fs::last_write_time(path, error);
  return error ? std::nullopt : std::optional(time);
}

}  // namespace

int runStraighten(const StraightenOptions& options, std::ostream& out, std::ostream& messages) {
  const std::vector<CalibrationPoint> points = readCorners(options.points);
  const cv::Mat picture = readColourPicture(options.image);
  prepareDrive();
  if (!isSameFile(options.image, kInputPicture)) {
    OutputFiles files;
    files.stage(kInputPicture, encodePicture(kInputPicture, picture));
    files.commit();
  }
  const std::optional<fs::file_time_type> before = writtenAt(kResultPicture);
  messages << "Press a key in the window \"Transformed Image\" to go on ..." << std::endl;
  std::array<double, 9> unused{};
  try {
    GetPerspectiveTransformationParam(points, unused.data(), unused[0], unused[1]);
  } catch (const cv::Exception& error) {
    failJob(error.err);
  }
  const std::optional<fs::file_time_type> after = writtenAt(kResultPicture);
  if (!after || after == before) {
    failJob(std::string(kResultPicture) + " was not written; is there room for 80 MB?");
  }
  out << "Straightened picture: " << fs::absolute(kResultPicture).string() << "\n";
  return kExitOk;
}

}  // namespace fisheye_calibration::program
