#include "page/source_reader.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "program/page/fake_machine.h"

namespace fisheye_calibration::program {
namespace {

using std::chrono::milliseconds;

struct Heard {
  std::atomic<int> live = 0;
  std::atomic<int> lost = 0;
  std::mutex mutex;
  std::string why;

  ReaderEvents events() {
    return {.live = [this] { ++live; },
            .lost =
                [this](const std::string& text) {
                  const std::lock_guard lock(mutex);
                  why = text;
                  ++lost;
                }};
  }
};

std::shared_ptr<FakeCamera> camera() {
  auto made = std::make_shared<FakeCamera>();
  made->picture = cv::Mat(4, 6, CV_8UC1, cv::Scalar(7));
  return made;
}

TEST(FrameSlot, KeepsTheNewestFrameOnly) {
  FrameSlot slot;
  EXPECT_EQ(slot.newest(), nullptr);
  for (int value = 1; value <= 3; ++value) {
    slot.publish(cv::Mat(1, 1, CV_8UC1, cv::Scalar(value)));
  }
  const FramePointer frame = slot.newerThan(1, milliseconds(0));
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(frame->number, 3U);
  EXPECT_EQ(frame->picture.at<unsigned char>(0, 0), 3);
  EXPECT_EQ(slot.newerThan(3, milliseconds(10)), nullptr);
}

TEST(FrameSlot, ClosingWakesThoseWhoWait) {
  FrameSlot slot;
  std::thread closer([&] {
    std::this_thread::sleep_for(milliseconds(50));
    slot.close();
  });
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(slot.newerThan(0, milliseconds(60000)), nullptr);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
  closer.join();
}

TEST(SourceReader, OpensALostSourceAgainWithLongerAndLongerPauses) {
  EXPECT_EQ(pauseBeforeAttempt(1), milliseconds(500));
  EXPECT_EQ(pauseBeforeAttempt(2), milliseconds(1000));
  EXPECT_EQ(pauseBeforeAttempt(4), milliseconds(4000));
  EXPECT_EQ(pauseBeforeAttempt(5), milliseconds(5000));
  EXPECT_EQ(pauseBeforeAttempt(1000), milliseconds(5000));

  const auto fake = camera();
  const auto slot = std::make_shared<FrameSlot>();
  Heard heard;
  fake->present = false;
  const SourceReader reader("cam", openerOf(fake), slot, heard.events());
  ASSERT_TRUE(within(milliseconds(5000), [&] { return heard.lost > 0; }));
  {
    const std::lock_guard lock(heard.mutex);
    EXPECT_EQ(heard.why, "cam: cannot be opened; next try in 0.5 s");
  }
  fake->present = true;
  ASSERT_NE(slot->newerThan(0, milliseconds(5000)), nullptr);
  fake->present = false;
  ASSERT_TRUE(within(milliseconds(5000), [&] { return heard.lost > 1; }));
  const std::lock_guard lock(heard.mutex);
  EXPECT_EQ(heard.why, "cam: gives no more frames; next try in 0.5 s");
}

TEST(SourceReader, ACameraThatGivesBrokenFramesOnlyIsOpenedAnew) {
  const auto fake = std::make_shared<FakeCamera>();
  const auto slot = std::make_shared<FrameSlot>();
  Heard heard;
  const SourceReader reader("cam", openerOf(fake), slot, heard.events());
  ASSERT_TRUE(within(milliseconds(20000), [&] { return heard.lost > 0; }));
  {
    const std::lock_guard lock(heard.mutex);
    EXPECT_EQ(heard.why, "cam: gives no frame (it is broken); next try in 0.5 s");
  }
  fake->show(cv::Mat(4, 6, CV_8UC1, cv::Scalar(7)));
  EXPECT_NE(slot->newerThan(0, milliseconds(20000)), nullptr);
  EXPECT_GE(fake->opened, 2);
}

TEST(SourceReader, APictureStaysThere) {
  const auto slot = std::make_shared<FrameSlot>();
  Heard heard;
  const SourceReader reader("a.png", openerOf(camera(), SourceKind::kPicture), slot,
                            heard.events());
  ASSERT_NE(slot->newerThan(2, milliseconds(5000)), nullptr);
  EXPECT_EQ(heard.lost, 0);
}

TEST(SourceReader, AHangingSourceDoesNotHoldUpTheEnd) {
  const auto fake = camera();
  fake->periodMs = 8000;
  const auto slot = std::make_shared<FrameSlot>();
  const auto heard = std::make_shared<Heard>();
  const auto start = std::chrono::steady_clock::now();
  { const SourceReader reader("cam", openerOf(fake), slot, heard->events()); }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
}  // namespace fisheye_calibration::program
