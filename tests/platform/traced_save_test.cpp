// A save at every one of its system calls: killed before it, or refused by it.
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <string>
#include <vector>

#include "fisheye_calibration.h"
#include "support/temporary_folder.h"
#include "support/traced_process.h"

namespace {

using support::bytesOf;
using support::SystemCall;
using support::Traced;

class TracedSave : public testing::Test {
 protected:
  void SetUp() override {
    restore();
    save();
    new_ = bytesOf(path_);
    ASSERT_NE(new_, kOld);
    ASSERT_NE(new_.find("; kept"), std::string::npos);
    restore();
    const Traced all = support::traced([this] { save(); });
    if (!all.possible) GTEST_SKIP() << "this system does not let processes be traced";
    ASSERT_TRUE(all.ended);
    ASSERT_EQ(bytesOf(path_), new_);
    calls_ = all.calls;
  }

  void restore() const { support::writeBytes(path_, kOld); }

  void save() const {
    FishEyeCalibrationParam param{};
    param.u0 = 2;
    param.ImageDy = 2;
    SaveCalibrationParam(path_.c_str(), param);
  }

  void expectOldOrNew(std::size_t call) {
    const std::string bytes = bytesOf(path_);
    EXPECT_TRUE(bytes == kOld || bytes == new_) << "call " << call << "\n" << bytes;
    (bytes == kOld ? olds_ : news_) += 1;
  }

  // The position of the only call of that number in the trace.
  std::size_t positionOf(long number) const {
    const auto isIt = [number](const SystemCall& call) { return call.number == number; };
    EXPECT_EQ(std::count_if(calls_.begin(), calls_.end(), isIt), 1) << "call " << number;
    return static_cast<std::size_t>(std::find_if(calls_.begin(), calls_.end(), isIt) -
                                    calls_.begin());
  }

  inline static const std::string kOld = "[CalibraionParam]\r\nu0=1.000000\r\n; kept\r\n";

  support::TemporaryFolder folder_;
  const std::string path_ = folder_.file("camera.ini");
  std::string new_;
  std::vector<SystemCall> calls_;
  int olds_ = 0;
  int news_ = 0;
};

TEST_F(TracedSave, KilledBeforeAnyOfItsCallsLeavesTheOldOrTheNewFile) {
  for (std::size_t call = 0; call < calls_.size(); ++call) {
    restore();
    const Traced killed = support::tracedAndKilled([this] { save(); }, call);
    ASSERT_FALSE(killed.ended);
    ASSERT_EQ(killed.calls.size(), call);
    expectOldOrNew(call);
  }
  EXPECT_GT(olds_, 0);
  EXPECT_GT(news_, 0);
}

TEST_F(TracedSave, RefusedByAnyOfItsCallsLeavesTheOldOrTheNewFile) {
  for (const int error : {EIO, ENOSPC, EINTR, EBADF, EMFILE, ENOMEM}) {
    for (std::size_t call = 0; call < calls_.size(); ++call) {
      restore();
      const Traced refused = support::tracedWithFailure([this] { save(); }, call, error);
      ASSERT_TRUE(refused.ended) << "call " << call;
      expectOldOrNew(call);
      EXPECT_EQ(folder_.entryCount(), 1) << "call " << call << ", error " << error;
    }
  }
  EXPECT_GT(olds_, 0);
  EXPECT_GT(news_, 0);
}

// After a power failure the name shows what has been synchronised: the content has to be on the
// disk before the file gets its name, and the name before the save ends.
TEST_F(TracedSave, SynchronisesTheContentBeforeTheNameAndThenTheFolder) {
  const std::size_t written = positionOf(SYS_write);
  const std::size_t renamed = positionOf(SYS_renameat);
  const long file = calls_[written].arguments[0];
  const long folder = calls_[renamed].arguments[0];
  std::vector<std::size_t> synchronised[2];
  for (std::size_t call = 0; call < calls_.size(); ++call) {
    if (calls_[call].number == SYS_fsync) {
      ASSERT_EQ(calls_[call].result, 0);
      const long number = calls_[call].arguments[0];
      ASSERT_TRUE(number == file || number == folder);
      synchronised[number == folder ? 1 : 0].push_back(call);
    }
  }
  ASSERT_EQ(synchronised[0].size(), 1u);
  ASSERT_EQ(synchronised[1].size(), 1u);
  EXPECT_LT(written, synchronised[0].front());
  EXPECT_LT(synchronised[0].front(), renamed);
  EXPECT_LT(renamed, synchronised[1].front());
}

}  // namespace
