#include "files/output_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "base/failure.h"
#include "files/output_places.h"
#include "program/support/run_program.h"

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;

TEST(OutputFiles, NothingChangesBeforeTheCommit) {
  const TemporaryFolder folder;
  const std::string old = folder.write("a.txt", "old");
  OutputFiles files;
  files.stage(old, "new");
  EXPECT_EQ(contents(old), "old");
  files.commit();
  EXPECT_EQ(contents(old), "new");
  EXPECT_THAT(folder.names(), ElementsAre("a.txt"));
}

TEST(OutputFiles, WhatIsNotCommittedLeavesNoTrace) {
  const TemporaryFolder folder;
  const std::string old = folder.write("a.txt", "old");
  {
    OutputFiles files;
    files.stage(old, "new");
    files.stage(folder.path("b.txt"), "new");
  }
  EXPECT_EQ(contents(old), "old");
  EXPECT_THAT(folder.names(), ElementsAre("a.txt"));
}

TEST(OutputFiles, APlaceInAMissingFolderIsRefused) {
  const TemporaryFolder folder;
  EXPECT_THROW(requireWritablePlace("-o", folder.path("none/a.txt")), Failure);
  EXPECT_THROW(requireWritablePlace("-o", folder.path("")), Failure);
  EXPECT_NO_THROW(requireWritablePlace("-o", folder.path("a.txt")));
}

#if !defined(_WIN32)
TEST(OutputFiles, ALinkStaysALink) {
  const TemporaryFolder folder;
  folder.write("real.txt", "old");
  std::filesystem::create_symlink("real.txt", folder.path("link.txt"));
  OutputFiles files;
  files.stage(folder.path("link.txt"), "new");
  files.commit();
  EXPECT_TRUE(std::filesystem::is_symlink(folder.path("link.txt")));
  EXPECT_EQ(contents(folder.path("real.txt")), "new");
}
#endif

}  // namespace
}  // namespace fisheye_calibration::program
