#include "commands/picture_options.h"

#include "base/failure.h"
#include "commands/declared_options.h"
#include "commands/option_values.h"

namespace fisheye_calibration::program {

void addPictureOptions(CLI::App& command, PictureOptions& options) {
  addOption(command, "--corrected-size", options.correctedSize,
            "size of the corrected picture, around the optical axis (default: chosen such "
            "that the whole target is in it, and the bed where it is seen sharply)")
      .typeName("WxH");
  addOption(command, "--bed", options.bed,
            "the rectangle of the bed that the corrected picture shows: its corner with the "
            "least X and Y, and its size")
      .typeName("X,Y,WxH");
  addOption(command, "--resolution", options.resolution, "size of a pixel with --bed")
      .typeName("MM");
}

PictureWish pictureOf(const PictureOptions& options) {
  PictureWish wish;
  if (!options.correctedSize.empty()) {
    if (!options.bed.empty()) {
      failBadInput("give either --corrected-size or --bed");
    }
    wish.size = parseImageSize("--corrected-size", options.correctedSize);
  }
  if (!options.bed.empty()) {
    wish.bed = parseArea("--bed", options.bed);
  }
  if (!options.resolution.empty()) {
    if (options.bed.empty()) {
      failBadInput("--resolution goes with --bed");
    }
    wish.resolution = parsePositiveNumber("--resolution", options.resolution);
  }
  return wish;
}

}  // namespace fisheye_calibration::program
