// How profile files are written, on every system: by Windows' own functions there, by the
// replacement elsewhere.
#include <gtest/gtest.h>

#include "platform/profile_file.h"
#include "support/temporary_folder.h"

using namespace fisheye_calibration;

namespace {

using platform::ProfileEntry;
using support::bytesOf;

class ProfileWriting : public testing::Test {
 protected:
  // The file's bytes after one write to a file of that content.
  std::string write(std::string_view content, const char* section, const char* key,
                    const char* value) {
    support::writeBytes(path, content);
    return write(section, key, value);
  }

  std::string write(const char* section, const char* key, const char* value) const {
    const ProfileEntry entry{key, value};
    EXPECT_TRUE(platform::writeProfileValues(path.c_str(), section, {&entry, 1}));
    return bytesOf(path);
  }

  support::TemporaryFolder folder;
  const std::string path = folder.file("profile.ini");
};

TEST_F(ProfileWriting, MissingFileIsCreated) { EXPECT_EQ(write("S", "a", "1"), "[S]\r\na=1\r\n"); }

TEST_F(ProfileWriting, EmptyFileIsFilled) { EXPECT_EQ(write("", "S", "a", "1"), "[S]\r\na=1\r\n"); }

TEST_F(ProfileWriting, ExistingKeyIsRewrittenInItsPlaceAndKeepsItsSpelling) {
  EXPECT_EQ(write("[SeC]\r\nKeY=1\r\nz=3\r\n", "SEC", "KEY", "2"), "[SeC]\r\nKeY=2\r\nz=3\r\n");
}

TEST_F(ProfileWriting, NewKeyGoesToTheEndOfItsSection) {
  EXPECT_EQ(write("[S]\r\na=1\r\n[T]\r\nx=1\r\n", "S", "b", "2"),
            "[S]\r\na=1\r\nb=2\r\n[T]\r\nx=1\r\n");
}

TEST_F(ProfileWriting, NewSectionGoesToTheEndOfTheFile) {
  EXPECT_EQ(write("[S]\r\na=1\r\n", "T", "a", "2"), "[S]\r\na=1\r\n[T]\r\na=2\r\n");
}

TEST_F(ProfileWriting, LastLineWithoutAnEndGetsOneFirst) {
  EXPECT_EQ(write("[S]\r\na=1", "S", "b", "2"), "[S]\r\na=1\r\nb=2\r\n");
  EXPECT_EQ(write("[S]\r\na=1", "T", "b", "2"), "[S]\r\na=1\r\n[T]\r\nb=2\r\n");
  EXPECT_EQ(write("[S]", "S", "b", "2"), "[S]\r\nb=2\r\n");
  EXPECT_EQ(write("[S]\r\na=1", "S", "a", "2"), "[S]\r\na=2\r\n");
}

TEST_F(ProfileWriting, FirstKeyOfANameIsRewritten) {
  EXPECT_EQ(write("[S]\r\na=1\r\na=2\r\n", "S", "a", "9"), "[S]\r\na=9\r\na=2\r\n");
}

TEST_F(ProfileWriting, FirstSectionOfANameIsWrittenTo) {
  EXPECT_EQ(write("[S]\r\na=1\r\n[S]\r\nb=2\r\n", "S", "b", "9"),
            "[S]\r\na=1\r\nb=9\r\n[S]\r\nb=2\r\n");
}

TEST_F(ProfileWriting, KeyBeforeTheFirstSectionIsUnchanged) {
  EXPECT_EQ(write("a=1\r\n[S]\r\nb=2\r\n", "S", "a", "9"), "a=1\r\n[S]\r\nb=2\r\na=9\r\n");
}

TEST_F(ProfileWriting, AllOtherLinesStay) {
  EXPECT_EQ(write("; comment\r\njunk\r\nx=0\r\n[R]\r\na=7\r\n[S]\r\n;a=8\r\nmore junk\r\n"
                  "name=\xB1\xEA\xB6\xA8\r\na=1\r\n[T]\r\na=5\r\n",
                  "S", "a", "2"),
            "; comment\r\njunk\r\nx=0\r\n[R]\r\na=7\r\n[S]\r\n;a=8\r\nmore junk\r\n"
            "name=\xB1\xEA\xB6\xA8\r\na=2\r\n[T]\r\na=5\r\n");
}

TEST_F(ProfileWriting, BlanksAroundAWrittenValueAreRemoved) {
  EXPECT_EQ(write("S", "b", "  x"), "[S]\r\nb=x\r\n");
  write("S", "b", " \ty  ");
  const char* key = "b";
  EXPECT_EQ(platform::readProfileValues(path.c_str(), "S", {&key, 1}).front(), "y");
}

TEST_F(ProfileWriting, QuotesAreWrittenAsGivenAndReadBackWithoutThem) {
  EXPECT_EQ(write("S", "c", "\"q\""), "[S]\r\nc=\"q\"\r\n");
  const char* key = "c";
  EXPECT_EQ(platform::readProfileValues(path.c_str(), "S", {&key, 1}).front(), "q");
}

TEST_F(ProfileWriting, CommentAfterARewrittenValueIsLost) {
  EXPECT_EQ(write("[S]\r\na=1 ; mm\r\n", "S", "a", "2"), "[S]\r\na=2\r\n");
}

TEST_F(ProfileWriting, SeveralEntriesAreWrittenInOrderAndTheLaterOfTwoWins) {
  const ProfileEntry entries[] = {{"b", "1"}, {"a", "2"}, {"b", "3"}};
  EXPECT_TRUE(platform::writeProfileValues(path.c_str(), "S", entries));
  EXPECT_EQ(bytesOf(path), "[S]\r\nb=3\r\na=2\r\n");
}

TEST_F(ProfileWriting, MissingFolderFailsAndIsNotCreated) {
  const ProfileEntry entry{"a", "1"};
  EXPECT_FALSE(
      platform::writeProfileValues(folder.file("missing/profile.ini").c_str(), "S", {&entry, 1}));
  EXPECT_EQ(folder.entryCount(), 0);
}

TEST_F(ProfileWriting, FolderAsPathFailsAndStays) {
  const std::filesystem::path inner = folder.path() / "inner";
  std::filesystem::create_directory(inner);
  const ProfileEntry entry{"a", "1"};
  EXPECT_FALSE(platform::writeProfileValues(inner.string().c_str(), "S", {&entry, 1}));
  EXPECT_TRUE(std::filesystem::is_empty(inner));
  EXPECT_EQ(folder.entryCount(), 1);
}

TEST_F(ProfileWriting, ReadOnlyFileFailsAndStays) {
  support::writeBytes(path, "[S]\r\na=1\r\n");
  const support::ReadOnlyFile readOnly(path);
  if (!readOnly.isRespected()) GTEST_SKIP() << "This user may write to read-only files";
  const ProfileEntry entry{"a", "2"};
  EXPECT_FALSE(platform::writeProfileValues(path.c_str(), "S", {&entry, 1}));
  EXPECT_EQ(bytesOf(path), "[S]\r\na=1\r\n");
  EXPECT_EQ(folder.entryCount(), 1);
}

TEST_F(ProfileWriting, NullPathFails) {
  const ProfileEntry entry{"a", "1"};
  EXPECT_FALSE(platform::writeProfileValues(nullptr, "S", {&entry, 1}));
}

}  // namespace
