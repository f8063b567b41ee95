#include "commands/straighten_command.h"

#include <array>
#include <memory>
#include <opencv2/core.hpp>
#include <optional>
#include <ostream>
#include <string>
#include <system_error>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "commands/declared_options.h"
#include "files/output_files.h"
#include "files/output_paths.h"
#include "files/picture_file.h"
#include "files/points_csv.h"
#include "fisheye_calibration.h"
#include "geometry/target_points.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

// Where the library reads and writes.
constexpr const char* kInputPicture = "D:/CorrectedImage.bmp";
constexpr const char* kResultPicture = "D:/CorrectedImage2.bmp";

struct StraightenOptions {
  fs::path points;
  fs::path image;
  fs::path output;  // empty: only the library's own file
};

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

std::vector<CalibrationPoint> readCorners(const fs::path& path) {
  std::vector<CalibrationPoint> points = readPoints(path);
  if (points.size() != 4) {
    failBadInput(nameOf(path) + ": " + std::to_string(points.size()) +
                 " point(s); give exactly four");
  }
  const CalibrationPoint& first = points[0];
  const CalibrationPoint& last = points[3];
  if (imagePosition(first) == imagePosition(last) || bedPosition(first) == bedPosition(last)) {
    failBadInput(nameOf(path) +
                 ": the first and the last point coincide; they are to lie on a diagonal, which "
                 "gives the scale");
  }
  return points;
}

std::optional<fs::file_time_type> writtenAt(const char* path) {
  std::error_code error;
  const fs::file_time_type time = fs::last_write_time(path, error);
  return error ? std::nullopt : std::optional(time);
}

void checkOutput(const StraightenOptions& options) {
  if (options.output.empty()) {
    return;
  }
  requireWritable("-o", options.output);
  requirePictureName("-o", options.output);
  if (isSameFile(options.output, options.image) || isSameFile(options.output, options.points)) {
    failBadInput("-o: " + nameOf(options.output) + " is named twice");
  }
}

// The file that the library wrote, under the name that the user wants.
std::string savedResult(const fs::path& output, std::ostream& messages) {
  if (output.empty()) {
    return absoluteNameOf(kResultPicture);
  }
  OutputFiles files;
  stagePicture(files, output, readColourPicture(kResultPicture, messages));
  files.commit();
  return nameOf(output);
}

int run(const StraightenOptions& options, const Streams& streams) {
  checkOutput(options);
  const std::vector<CalibrationPoint> points = readCorners(options.points);
  const cv::Mat picture = readColourPicture(options.image, streams.messages);
  prepareDrive();
  if (!isSameFile(options.image, kInputPicture)) {
    OutputFiles files;
    stagePicture(files, kInputPicture, picture);
    files.commit();
  }
  const std::optional<fs::file_time_type> before = writtenAt(kResultPicture);
  streams.messages << "Press a key in the window \"Transformed Image\" or close it to go on ..."
                   << std::endl;
  std::array<double, 9> unused{};
  try {
    GetPerspectiveTransformationParam(points, unused.data(), unused[0], unused[1]);
  } catch (const cv::Exception& error) {
    failJob(nameOf(options.image) + " cannot be straightened (" + error.err + ")");
  }
  const std::optional<fs::file_time_type> after = writtenAt(kResultPicture);
  if (!after || after == before) {
    failJob(std::string(kResultPicture) + " was not written; is there room for 80 MB?");
  }
  streams.out << "Straightened picture: " << savedResult(options.output, streams.messages) << "\n";
  return kExitOk;
}

}  // namespace

Command addStraightenCommand(CLI::App& app) {
  const auto options = std::make_shared<StraightenOptions>();
  CLI::App* command =
      addCommand(app, "straighten",
                 "Show a corrected picture straightened by four points, and keep the result");
  addPath(*command, "points", options->points,
          "four points (CSV) in the corrected picture; the first and the last lie on a diagonal")
      .required();
  addPath(*command, "image", options->image, "the corrected picture").required();
  addPath(*command, "-o,--output", options->output, "write the result to this file, too")
      .typeName("PICTURE");
  setFooter(
      *command,
      "The library works on fixed files on drive D: (elsewhere than on Windows a folder named D: "
      "in the working directory, made if it is missing): the picture is copied to "
      "D:/CorrectedImage.bmp and the result is D:/CorrectedImage2.bmp. The window waits for a "
      "key or until it is closed.\n\n"
      "Example:\n  fisheye-calibration straighten corners.csv corrected.png -o straight.png");
  return {command, [options](const Streams& streams) { return run(*options, streams); }};
}

}  // namespace fisheye_calibration::program
