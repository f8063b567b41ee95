// Runs over sources that end, break or go on for ever.
#include "commands/source_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <sstream>
#include <utility>
#include <vector>

#include "base/failure.h"

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;

// Yields frames whose faults are given, empty ones for frames that are well.
class ListedFrames : public FrameSource {
 public:
  ListedFrames(SourceKind kind, std::vector<std::string> faults, std::optional<int> count = {})
      : kind_(kind), faults_(std::move(faults)), count_(count) {}

  std::optional<SourceFrame> next() override {
    if (number_ == faults_.size()) {
      return std::nullopt;
    }
    SourceFrame frame = {.name = "frame " + std::to_string(number_ + 1), .fault = faults_[number_]};
    ++number_;
    return frame;
  }
  SourceKind kind() const override { return kind_; }
  double rate() const override { return 0; }
  std::optional<int> count() const override { return count_; }

 private:
  SourceKind kind_;
  std::vector<std::string> faults_;
  std::optional<int> count_;
  std::size_t number_ = 0;
};

class SourceRun : public testing::Test {
 protected:
  SourceTally run(ListedFrames& source, const std::string& limit) {
    const Interruption interruption;
    return runOver(source, parseFrameLimit(limit), interruption, streams,
                   [&](const SourceFrame&, int number) {
                     worked.push_back(number);
                     if (number == interruptAt) {
                       std::raise(SIGINT);
                     }
                     return std::string();
                   });
  }

  std::istringstream in;
  std::ostringstream out;
  std::ostringstream messages;
  std::ostringstream progress;
  Streams streams = {.in = in,
                     .out = out,
                     .messages = messages,
                     .progress = progress,
                     .progressBar = false,
                     .verbose = false};
  std::vector<int> worked;
  int interruptAt = 0;
};

TEST_F(SourceRun, BrokenFramesAreReportedAndTheRestIsDone) {
  ListedFrames film(SourceKind::kVideo, {"", "it is torn", ""}, 3);
  const SourceTally tally = run(film, "");
  EXPECT_THAT(worked, ElementsAre(1, 3));
  EXPECT_EQ(messages.str(), "frame 2: it is torn\n");
  EXPECT_EQ(shareDone(tally, film, parseFrameLimit("")), "2 of 3 frames");
  EXPECT_EQ(exitCodeOf(tally, "film", messages), 1);
}

TEST_F(SourceRun, TheShareIsOfAllFramesEvenIfTheFileStatesTooFew) {
  ListedFrames film(SourceKind::kVideo, {"", "", "torn", ""}, 2);
  EXPECT_EQ(shareDone(run(film, ""), film, parseFrameLimit("")), "3 of 4 frames");
}

TEST_F(SourceRun, ACameraThatGoesIsAFailureThatKeepsWhatWasDone) {
  ListedFrames camera(SourceKind::kDevice, {"", "", ""});
  const SourceTally tally = run(camera, "");
  EXPECT_EQ(tally.done, 3);
  EXPECT_EQ(exitCodeOf(tally, "camera 0", messages), 1);
  EXPECT_EQ(messages.str(), "camera 0: no more frames come after frame 3\n");
}

TEST_F(SourceRun, AStreamThatEndsBeforeTheFramesWantedIsAFailure) {
  ListedFrames stream(SourceKind::kStream, {"", "", ""});
  EXPECT_EQ(exitCodeOf(run(stream, "4"), "http://a/b", messages), 1);
  EXPECT_EQ(messages.str(), "http://a/b: no more frames come after frame 3\n");
}

TEST_F(SourceRun, AStreamMayEndAndFramesMaySuffice) {
  ListedFrames stream(SourceKind::kStream, {"", "", ""});
  EXPECT_EQ(exitCodeOf(run(stream, ""), "stream", messages), 0);
  ListedFrames camera(SourceKind::kDevice, {"", "", ""});
  EXPECT_EQ(exitCodeOf(run(camera, "3"), "camera", messages), 0);
  ListedFrames film(SourceKind::kVideo, {"", ""}, 2);
  EXPECT_EQ(exitCodeOf(run(film, "9"), "film", messages), 0);
  EXPECT_EQ(messages.str(), "");
}

TEST_F(SourceRun, AnInterruptedCameraEndsWell) {
  interruptAt = 2;
  ListedFrames camera(SourceKind::kDevice, {"", "", "", ""});
  const SourceTally tally = run(camera, "");
  EXPECT_THAT(worked, ElementsAre(1, 2));
  EXPECT_EQ(exitCodeOf(tally, "camera", messages), 0);
}

TEST_F(SourceRun, AnInterruptedVideoIsAFailure) {
  interruptAt = 2;
  ListedFrames film(SourceKind::kVideo, {"", "", "", ""}, 4);
  EXPECT_THROW(run(film, ""), Failure);
  EXPECT_THAT(worked, ElementsAre(1, 2));
}

TEST(Interruptions, ArePutBackAndIgnoredByWhoIgnoresThem) {
  const auto before = std::signal(SIGINT, SIG_IGN);
  {
    const Interruption interruption;
    std::raise(SIGINT);
    EXPECT_FALSE(interruption.requested());
  }
  EXPECT_EQ(std::signal(SIGINT, SIG_DFL), SIG_IGN);
  {
    const Interruption interruption;
    EXPECT_FALSE(interruption.requested());
    std::raise(SIGINT);
    EXPECT_TRUE(interruption.requested());
  }
  EXPECT_EQ(std::signal(SIGINT, before), SIG_DFL);
}

}  // namespace
}  // namespace fisheye_calibration::program
