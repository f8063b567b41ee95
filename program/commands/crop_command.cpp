#include "commands/crop_command.h"

#include <ostream>

#include "base/failure.h"
#include "base/frame_buffer.h"
#include "commands/option_values.h"
#include "files/output_files.h"
#include "files/output_places.h"
#include "files/picture_file.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

int runCrop(const CropOptions& options, std::ostream& out, std::ostream& messages) {
  const Size size = parseSize("--size", options.size, 1, kLargestImageSide);
  requireWritablePlace("-o", options.output);
  requirePictureName("-o", options.output);
  if (isSameFile(options.output, options.image)) {
    failBadInput("-o: " + options.output + " is the picture itself");
  }
  FrameBuffer source = toBuffer(readFrame(options.image));
  if (size.width > source.size.width || size.height > source.size.height) {
    messages << "warning: " << options.image << " has only " << source.size.width << "x"
             << source.size.height << " pixels; what it does not fill stays black\n";
  }
  FrameBuffer cut = blankBuffer(size, source.bitCount);
  CroppingImage(source.data(), source.size.width, source.size.height, source.bitCount, cut.data(),
                size.width, size.height);
  OutputFiles files;
  files.stage(options.output, encodePicture(options.output, toPicture(cut)));
  files.commit();
  out << options.image << ": the centre, " << size.width << "x" << size.height << ", written to "
      << options.output << "\n";
  return kExitOk;
}

}  // namespace fisheye_calibration::program
