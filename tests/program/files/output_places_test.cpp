#include "files/output_places.h"

#include <gtest/gtest.h>

#include "base/failure.h"
#include "program/support/run_program.h"

namespace fisheye_calibration::program {
namespace {

TEST(OutputPlaces, APlaceInAMissingFolderIsRefused) {
  const support::TemporaryFolder folder;
  EXPECT_THROW(requireWritablePlace("-o", folder.file("none/a.txt")), Failure);
  EXPECT_THROW(requireWritablePlace("-o", folder.file("")), Failure);
  EXPECT_NO_THROW(requireWritablePlace("-o", folder.file("a.txt")));
}

TEST(OutputPlaces, OneFileUnderTwoNamesIsTheSame) {
  const support::TemporaryFolder folder;
  const std::string file = writeFile(folder, "a.txt", "text");
  const std::string again = folder.file("../") + folder.path().filename().string() + "/a.txt";
  EXPECT_TRUE(isSameFile(file, again));
  EXPECT_TRUE(isSamePlace(file, again));
  EXPECT_FALSE(isSamePlace(file, folder.file("b.txt")));
}

TEST(OutputPlaces, AFileThatDoesNotExistYetIsKnownByItsName) {
  const support::TemporaryFolder folder;
  EXPECT_FALSE(isSameFile(folder.file("b.txt"), folder.file("b.txt")));
  EXPECT_TRUE(isSamePlace(folder.file("b.txt"), folder.file("b.txt")));
}

}  // namespace
}  // namespace fisheye_calibration::program
