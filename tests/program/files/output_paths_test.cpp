#include "files/output_paths.h"

#include <gtest/gtest.h>

#include "base/failure.h"
#include "program/support/run_program.h"

namespace fisheye_calibration::program {
namespace {

TEST(OutputPaths, APathInAMissingFolderIsRefused) {
  const support::TemporaryFolder folder;
  EXPECT_THROW(requireWritable("-o", folder.file("none/a.txt")), Failure);
  EXPECT_THROW(requireWritable("-o", folder.file("")), Failure);
  EXPECT_NO_THROW(requireWritable("-o", folder.file("a.txt")));
}

TEST(OutputPaths, OneFileUnderTwoNamesIsTheSame) {
  const support::TemporaryFolder folder;
  const std::string file = writeFile(folder, "a.txt", "text");
  const std::string again = folder.file("../") + folder.path().filename().string() + "/a.txt";
  EXPECT_TRUE(isSameFile(file, again));
  EXPECT_TRUE(isSamePath(file, again));
  EXPECT_FALSE(isSamePath(file, folder.file("b.txt")));
}

TEST(OutputPaths, AFileThatDoesNotExistYetIsKnownByItsName) {
  const support::TemporaryFolder folder;
  EXPECT_FALSE(isSameFile(folder.file("b.txt"), folder.file("b.txt")));
  EXPECT_TRUE(isSamePath(folder.file("b.txt"), folder.file("b.txt")));
}

}  // namespace
}  // namespace fisheye_calibration::program
