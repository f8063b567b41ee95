#include "commands/corrected_source.h"

#include <algorithm>
#include <cmath>
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

// A camera says how many frames it gives; how many of them can be corrected in time shows
// afterwards.
void noteSpeed(const std::string& name, const SourceTally& tally, double rate,
               std::ostream& messages) {
  const double taken = static_cast<double>(tally.done) / tally.seconds;
  if (rate > 0 && tally.done > 1 && std::abs(taken - rate) > 0.1 * rate) {
    messages << "note: " << name << ": " << general(taken, 3)
             << " frames per second were taken; the video plays at " << general(rate, 6)
             << " (--fps changes that)\n";
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
    failBadInput(sourceName(nameOf(*moving)) +
                 ": a video, device or stream goes alone, not with other frames");
  }
  return false;
}

int correctSource(const SourceOptions& options, const Renderer& renderer, const Streams& streams) {
  const int limit = parseFrameLimit(options.frames);
  checkPaths(options);
  const std::unique_ptr<FrameSource> source = openSource(options.source);
  const std::unique_ptr<FrameSink> sink =
      openSink(options.output, options.rate, *source, streams.messages);
  const Interruption interruption;  // until all has been written
  FrameCorrector corrector(renderer, streams.messages);
  OutputFiles mask;
  const SourceTally tally =
      runOver(*source, limit, interruption, streams, [&](const SourceFrame& frame, int number) {
        onFrame(frame.name, [&] {
          const View view = corrector.correct(frame.picture, frame.name);
          if (corrector.isFirst() && !options.mask.empty()) {
            stagePicture(mask, options.mask, view.mask);
          }
          sink->put(view.picture, number);
          corrector.accept(view);
        });
        return std::string();
      });
  const std::string written = sink->finish(streams.messages);
  mask.commit();
  const std::string name = sourceName(options.source);
  if (isEndless(source->kind())) {
    noteSpeed(name, tally, sink->rate(), streams.messages);
  }
  streams.out << name << ": " << shareDone(tally, *source, limit) << " corrected in "
              << general(tally.seconds, 3) << " s, "
              << general(static_cast<double>(tally.done) / tally.seconds, 3)
              << " frames per second, reading and writing included; written to " << written << "\n";
  return exitCodeOf(tally, name, streams.messages);
}

}  // namespace fisheye_calibration::program
