#include "commands/source_run.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <optional>
#include <ostream>

#include "base/failure.h"
#include "base/text.h"
#include "commands/corrected_view.h"
#include "reports/progress_bar.h"

namespace fisheye_calibration::program {
namespace {

constexpr int kNoLimit = std::numeric_limits<int>::max();

// How many frames will come, if that is known.
std::optional<int> expectedCount(const FrameSource& source, int limit) {
  const std::optional<int> count = source.count();
  if (count || limit < kNoLimit) {
    return std::min(count.value_or(kNoLimit), limit);
  }
  return std::nullopt;
}

std::string progressOf(int seen, const std::optional<int>& expected, double seconds) {
  const auto done = static_cast<std::size_t>(seen);
  return expected ? progressText(done, static_cast<std::size_t>(std::max(*expected, seen)), seconds)
                  : progressText(done, seconds);
}

// A camera does not end by itself, and a stream not before the frames that were asked for.
bool isCutShort(const FrameSource& source, int limit) {
  return source.kind() == SourceKind::kDevice ||
         (source.kind() == SourceKind::kStream && limit < kNoLimit);
}

}  // namespace

int parseFrameLimit(const std::string& text) {
  if (text.empty()) {
    return kNoLimit;
  }
  const std::optional<int> limit = parseInteger(text);
  if (!limit || *limit < 1) {
    failBadInput("--frames: give a whole number from 1, not " + inQuotes(text));
  }
  return *limit;
}

SourceTally runOver(FrameSource& source, int limit, const Interruption& interruption,
                    const Streams& streams,
                    const std::function<std::string(const SourceFrame&, int number)>& work) {
  const auto start = std::chrono::steady_clock::now();
  const auto seconds = [&] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  SourceTally tally;
  ProgressBar bar(streams.messages, streams.progressBar);
  const auto report = [&](const std::string& text) {
    bar.clear();
    streams.messages << text << "\n";
  };
  while (tally.seen < limit && !interruption.requested()) {
    const std::optional<SourceFrame> frame = source.next();
    if (!frame) {
      tally.cutShort = isCutShort(source, limit);
      break;
    }
    ++tally.seen;
    if (!frame->notes.empty()) {
      report(std::string(trimmed(frame->notes)));
    }
    try {
      if (!frame->fault.empty()) {
        failBadInput(frame->name + ": " + frame->fault);
      }
      const std::string remark = work(*frame, tally.seen);
      if (remark.empty()) {
        ++tally.done;
      } else {
        report(remark);
      }
    } catch (const HopelessRun&) {
      throw;
    } catch (const Failure& failure) {
      report(failure.what());
      ++tally.broken;
    }
    bar.show(progressOf(tally.seen, expectedCount(source, limit), seconds()));
  }
  if (interruption.requested() && !isEndless(source.kind())) {
    failJob("interrupted");
  }
  tally.seconds = seconds();
  return tally;
}

std::string shareDone(const SourceTally& tally, const FrameSource& source, int limit) {
  const int expected = source.count() ? std::min(*source.count(), limit) : tally.seen;
  const int all = tally.broken > 0 ? std::max(expected, tally.seen) : tally.seen;
  return std::to_string(tally.done) + " of " + std::to_string(all) + " frames";
}

int exitCodeOf(const SourceTally& tally, const std::string& name, std::ostream& messages) {
  if (tally.cutShort) {
    messages << name << ": no more frames come after frame " << tally.seen << "\n";
  }
  return tally.broken == 0 && tally.done > 0 && !tally.cutShort ? kExitOk : kExitJobFailed;
}

}  // namespace fisheye_calibration::program
