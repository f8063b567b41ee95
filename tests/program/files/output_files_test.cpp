#include "files/output_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "program/support/run_program.h"

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;

TEST(OutputFiles, NothingChangesBeforeTheCommit) {
  const support::TemporaryFolder folder;
  const std::string old = writeFile(folder, "a.txt", "old");
  OutputFiles files;
  files.stage(old, "new");
  EXPECT_EQ(support::bytesOf(old), "old");
  files.commit();
  EXPECT_EQ(support::bytesOf(old), "new");
  EXPECT_THAT(namesIn(folder), ElementsAre("a.txt"));
}

TEST(OutputFiles, WhatIsNotCommittedLeavesNoTrace) {
  const support::TemporaryFolder folder;
  const std::string old = writeFile(folder, "a.txt", "old");
  {
    OutputFiles files;
    files.stage(old, "new");
    files.stage(folder.file("b.txt"), "new");
  }
  EXPECT_EQ(support::bytesOf(old), "old");
  EXPECT_THAT(namesIn(folder), ElementsAre("a.txt"));
}

TEST(OutputFiles, AFileThatOthersWriteReplacesTheOldOneOnCommit) {
  const support::TemporaryFolder folder;
  const std::string old = writeFile(folder, "a.avi", "old");
  OutputFiles files;
  const std::filesystem::path temporary = files.stageNew(old);
  EXPECT_EQ(temporary.extension(), ".avi");
  EXPECT_FALSE(std::filesystem::exists(temporary));
  writeFile(folder, temporary.filename().string(), "new");
  EXPECT_EQ(support::bytesOf(old), "old");
  files.commit();
  EXPECT_EQ(support::bytesOf(old), "new");
  EXPECT_THAT(namesIn(folder), ElementsAre("a.avi"));
}

#if !defined(_WIN32)
TEST(OutputFiles, PermissionsOfTheOldFilesAreKept) {
  const support::TemporaryFolder folder;
  const std::string text = writeFile(folder, "a.txt", "old");
  const std::string film = writeFile(folder, "a.avi", "old");
  const auto shared = static_cast<std::filesystem::perms>(0660);
  std::filesystem::permissions(text, shared);
  std::filesystem::permissions(film, shared);
  OutputFiles files;
  files.stage(text, "new");
  writeFile(folder, files.stageNew(film).filename().string(), "new");
  files.commit();
  EXPECT_EQ(std::filesystem::status(text).permissions(), shared);
  EXPECT_EQ(std::filesystem::status(film).permissions(), shared);
}

TEST(OutputFiles, ALinkStaysALink) {
  const support::TemporaryFolder folder;
  writeFile(folder, "real.txt", "old");
  std::filesystem::create_symlink("real.txt", folder.file("link.txt"));
  OutputFiles files;
  files.stage(folder.file("link.txt"), "new");
  files.commit();
  EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link.txt")));
  EXPECT_EQ(support::bytesOf(folder.file("real.txt")), "new");
}
#endif

}  // namespace
}  // namespace fisheye_calibration::program
