#include "commands/corrected_source.h"

#include <algorithm>
#include <memory>
#include <ostream>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/text.h"
#include "commands/frame_sink.h"
#include "commands/source_run.h"
#include "files/output_files.h"
#include "files/output_paths.h"
#include "files/picture_file.h"
#include "files/video_kind.h"
#include "sources/frame_source.h"

namespace fisheye_calibration::program {
namespace fs = std::filesystem;
namespace {

bool isMoving(const fs::path& frame) {
  const SourceKind kind = sourceKind(nameOf(frame));
  return kind != SourceKind::kPicture && kind != SourceKind::kFolder;
}

void checkPaths(const SourceOptions& options) {
  if (isSamePath(options.output, pathOf(options.source))) {
    failBadInput("-o: " + nameOf(options.output) + " is the source itself");
  }
  if (options.mask.empty()) {
    return;
  }
  requireWritable("--mask", options.mask);
  requirePictureName("--mask", options.mask);
  if (isSamePath(options.mask, options.output)) {
    failBadInput("--mask: " + nameOf(options.mask) + " is named twice");
  }
  // There it might replace a frame, or be replaced by a view.
  const fs::path folder = fs::absolute(options.mask).parent_path();
  if (isSamePath(folder, pathOf(options.source)) || isSamePath(folder, options.output)) {
    failBadInput("--mask: " + nameOf(options.mask) + " must not lie among the frames");
  }
}

}  // namespace

bool isMovingSource(const std::vector<fs::path>& frames, const fs::path& output) {
  if (frames.size() == 1) {
    return isMoving(frames[0]) ||
           (sourceKind(nameOf(frames[0])) == SourceKind::kFolder && hasVideoName(output) &&
            sourceKind(nameOf(output)) != SourceKind::kFolder);
  }
  const auto moving = std::find_if(frames.begin(), frames.end(), isMoving);
  if (moving != frames.end()) {
    failBadInput(nameOf(*moving) + ": a video, device or stream goes alone, not with other frames");
  }
  return false;
}

int correctSource(const SourceOptions& options, const Renderer& renderer, const Streams& streams) {
  const int limit = parseFrameLimit(options.frames);
  checkPaths(options);
  const std::unique_ptr<FrameSource> source = openSource(options.source);
  const std::unique_ptr<FrameSink> sink =
      openSink(options.output, options.rate, *source, streams.messages);
  FrameCorrector corrector(renderer, streams.messages);
  OutputFiles mask;
  const SourceTally tally =
      runOver(*source, limit, streams, [&](const SourceFrame& frame, int number) {
        onFrame(frame.name, [&] {
          const View view = corrector.correct(frame.picture, frame.name);
          sink->put(view.picture, number);
          if (corrector.isFirst() && !options.mask.empty()) {
            stagePicture(mask, options.mask, view.mask);
          }
          corrector.accept(view);
        });
        return std::string();
      });
  const std::string written = sink->finish(streams.messages);
  mask.commit();
  streams.out << options.source << ": " << shareDone(tally, *source, limit) << " corrected in "
              << general(tally.seconds, 3) << " s, "
              << general(static_cast<double>(tally.done) / tally.seconds, 3)
              << " frames per second, reading and writing included; written to " << written << "\n";
  return tally.broken == 0 && tally.done > 0 ? kExitOk : kExitJobFailed;
}

}  // namespace fisheye_calibration::program
