#include "commands/map_conversion.h"

#include "base/failure.h"
#include "base/text.h"

namespace fisheye_calibration::program {
namespace {

struct FrameName {
  const char* name;
  ImageFrame frame;
};

constexpr FrameName kFrameNames[] = {{"world", ImageFrame::kWorld},
                                     {"raw", ImageFrame::kRaw},
                                     {"corrected", ImageFrame::kCorrected},
                                     {"second", ImageFrame::kSecond},
                                     {"stitched", ImageFrame::kStitched}};

constexpr Conversion kConversions[] = {{ImageFrame::kWorld, ImageFrame::kRaw, false},
                                       {ImageFrame::kWorld, ImageFrame::kCorrected, true},
                                       {ImageFrame::kWorld, ImageFrame::kSecond, true},
                                       {ImageFrame::kSecond, ImageFrame::kWorld, true},
                                       {ImageFrame::kRaw, ImageFrame::kWorld, false},
                                       {ImageFrame::kRaw, ImageFrame::kCorrected, true},
                                       {ImageFrame::kRaw, ImageFrame::kSecond, true},
                                       {ImageFrame::kWorld, ImageFrame::kStitched, false},
                                       {ImageFrame::kStitched, ImageFrame::kWorld, false}};

ImageFrame findFrame(const std::string& option, const std::string& name) {
  for (const FrameName& known : kFrameNames) {
    if (equalIgnoringCase(name, known.name)) {
      return known.frame;
    }
  }
  failBadInput(option + ": world, raw, corrected, second or stitched, not " + inQuotes(name));
}

}  // namespace

Conversion findConversion(const std::string& from, const std::string& to) {
  const ImageFrame source = findFrame("--from", from);
  const ImageFrame target = findFrame("--to", to);
  if (source == target) {
    failBadInput("--from and --to name the same frame, " + from);
  }
  for (const Conversion& conversion : kConversions) {
    if (conversion.from == source && conversion.to == target) {
      return conversion;
    }
  }
  std::string message = "there is no conversion from " + from + " to " + to;
  if (source == ImageFrame::kStitched || target == ImageFrame::kStitched) {
    message += "; a stitched picture has world to stitched and stitched to world";
  } else if (source == ImageFrame::kSecond) {
    message += "; go from second to world and from there on";
  } else {
    message += "; world and raw go to each other, to corrected and to second, second goes to world";
  }
  failBadInput(message);
}

}  // namespace fisheye_calibration::program
