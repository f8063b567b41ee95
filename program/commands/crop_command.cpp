#include "commands/crop_command.h"

#include <memory>
#include <ostream>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/frame_buffer.h"
#include "commands/declared_options.h"
#include "commands/option_values.h"
#include "files/output_files.h"
#include "files/output_paths.h"
#include "files/picture_file.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {
namespace {

struct CropOptions {
  std::filesystem::path image;
  std::string size;
  std::filesystem::path output;
};

int run(const CropOptions& options, const Streams& streams) {
  const Size size = parseImageSize("--size", options.size);
  requireWritable("-o", options.output);
  requirePictureName("-o", options.output);
  if (isSameFile(options.output, options.image)) {
    failBadInput("-o: " + nameOf(options.output) + " is the picture itself");
  }
  FrameBuffer source = toBuffer(readFrame(options.image, streams.messages));
  if (size.width > source.size.width || size.height > source.size.height) {
    streams.messages << "warning: " << nameOf(options.image) << " has only "
                     << sizeText(source.size) << " pixels; what it does not fill stays black\n";
  }
  FrameBuffer cut = blankBuffer(size, source.bitCount);
  CroppingImage(source.data(), source.size.width, source.size.height, source.bitCount, cut.data(),
                size.width, size.height);
  OutputFiles files;
  stagePicture(files, options.output, toPicture(cut));
  files.commit();
  streams.out << nameOf(options.image) << ": the centre, " << sizeText(size) << ", written to "
              << nameOf(options.output) << "\n";
  return kExitOk;
}

}  // namespace

Command addCropCommand(CLI::App& app) {
  const auto options = std::make_shared<CropOptions>();
  CLI::App* command = addCommand(app, "crop", "Cut the centre out of a picture");
  addPath(*command, "image", options->image, "the picture").required();
  addOption(*command, "--size", options->size, "size of what is kept").typeName("WxH").required();
  addPath(*command, "-o,--output", options->output, "the cut picture")
      .typeName("PICTURE")
      .required();
  setFooter(*command, "Example:\n  fisheye-calibration crop top.png --size 1200x800 -o bed.png");
  return {command, [options](const Streams& streams) { return run(*options, streams); }};
}

}  // namespace fisheye_calibration::program
