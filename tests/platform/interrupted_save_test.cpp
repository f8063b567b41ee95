// Whatever interrupts or refuses a save, the file is the old one or the new one as a whole.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <random>
#include <thread>

#include "fisheye_calibration.h"
#include "support/temporary_folder.h"

namespace {

using support::bytesOf;

class InterruptedSave : public testing::Test {
 protected:
  // The file that a save of a record filled with `value` makes.
  static std::string savedBytes(float value) {
    const support::TemporaryFolder elsewhere;
    save(elsewhere.file("expected.ini"), value);
    return bytesOf(elsewhere.file("expected.ini"));
  }

  static void save(const std::string& file, float value) {
    FishEyeCalibrationParam param{};
    param.u0 = value;
    param.p9 = static_cast<double>(value);
    param.ImageDy = value;
    SaveCalibrationParam(file.c_str(), param);
  }

  support::TemporaryFolder folder;
  const std::string path = folder.file("camera.ini");
};

TEST_F(InterruptedSave, KilledSaverLeavesAWholeFile) {
  const std::string first = savedBytes(1);
  const std::string second = savedBytes(2);
  ASSERT_NE(first, second);
  std::minstd_rand random(7);
  for (int round = 0; round < 40; ++round) {
    save(path, 1);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      for (;;) {
        save(path, 2);
        save(path, 1);
      }
    }
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 4000));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    const std::string bytes = bytesOf(path);
    ASSERT_TRUE(bytes == first || bytes == second) << bytes;
  }
}

TEST_F(InterruptedSave, ConcurrentReaderSeesOldOrNewButNoMixture) {
  save(path, 1);
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    for (;;) {
      save(path, 2);
      save(path, 1);
    }
  }
  int mixtures = 0;
  for (int i = 0; i < 2000; ++i) {
    FishEyeCalibrationParam param{};
    LoadCalibrationParam(path.c_str(), param);
    const bool whole = (param.u0 == 1.0f || param.u0 == 2.0f) && param.ImageDy == param.u0 &&
                       param.p9 == static_cast<double>(param.u0);
    mixtures += whole ? 0 : 1;
  }
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  EXPECT_EQ(mixtures, 0);
}

TEST_F(InterruptedSave, ConcurrentSaversLeaveAWholeFileAndNothingElse) {
  const std::string first = savedBytes(1);
  const std::string second = savedBytes(2);
  const auto saveOften = [this](float value) {
    for (int i = 0; i < 200; ++i) {
      save(path, value);
    }
  };
  std::thread one(saveOften, 1.0f);
  std::thread two(saveOften, 2.0f);
  one.join();
  two.join();
  const std::string bytes = bytesOf(path);
  EXPECT_TRUE(bytes == first || bytes == second) << bytes;
  EXPECT_EQ(folder.entryCount(), 1);
}

// A limit on the size of files stands in for a full disk: the write fails in the middle.
TEST_F(InterruptedSave, FullDiskLeavesTheOldFileAndNothingElse) {
  const std::string old = "; hand made\n[CalibraionParam]\nu0=5\n";
  support::writeBytes(path, old);
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{300, 300};
    const bool limited = ::setrlimit(RLIMIT_FSIZE, &limit) == 0;
    const bool result = limited && SaveCalibrationParam(path.c_str(), FishEyeCalibrationParam{});
    ::_exit(result ? 42 : 1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 42) << "the result is true whatever happens";
  EXPECT_EQ(bytesOf(path), old);
  EXPECT_EQ(folder.entryCount(), 1);
}

// Runs the save in a process that is not root, who may write anywhere. True when it returned true.
bool savedByPlainUser(const std::string& path) {
  const pid_t child = ::fork();
  if (child == 0) {
    constexpr uid_t nobody = 65534;
    const bool plainUser = ::geteuid() != 0 || ::setuid(nobody) == 0;
    ::_exit(plainUser && SaveCalibrationParam(path.c_str(), FishEyeCalibrationParam{}) ? 42 : 1);
  }
  int status = 0;
  return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
         WEXITSTATUS(status) == 42;
}

TEST_F(InterruptedSave, FolderWithoutWritePermissionLeavesTheOldFile) {
  const std::string old = "[CalibraionParam]\nu0=5\n";
  support::writeBytes(path, old);
  std::filesystem::permissions(path, std::filesystem::perms::all);
  std::filesystem::permissions(folder.path(), std::filesystem::perms(0555));
  EXPECT_TRUE(savedByPlainUser(path));
  std::filesystem::permissions(folder.path(), std::filesystem::perms::owner_all);
  EXPECT_EQ(bytesOf(path), old);
  EXPECT_EQ(folder.entryCount(), 1);
}

TEST_F(InterruptedSave, FileThatOnlyOthersMayWriteStays) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root has files that this process may not write";
  }
  const std::string old = "[CalibraionParam]\nu0=5\n";
  support::writeBytes(path, old);
  std::filesystem::permissions(path, std::filesystem::perms(0644));
  std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
  EXPECT_TRUE(savedByPlainUser(path));
  EXPECT_EQ(bytesOf(path), old);
  EXPECT_EQ(folder.entryCount(), 1);
  std::filesystem::permissions(path, std::filesystem::perms::all);
  EXPECT_TRUE(savedByPlainUser(path));
  EXPECT_NE(bytesOf(path), old) << "the permission is what was missing";
}

}  // namespace
