// Files are replaced as a whole where the system has no profile functions: links, permissions and
// everything that refuses a save.
#include "platform/whole_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/profile_file.h"
#include "support/temporary_folder.h"

using namespace fisheye_calibration;

namespace {

namespace fs = std::filesystem;
using platform::FileState;
using platform::readWholeFile;
using platform::replaceWholeFile;
using support::bytesOf;
using support::writeBytes;

class WholeFile : public testing::Test {
 protected:
  support::TemporaryFolder folder;
  const std::string path = folder.file("camera.ini");
};

mode_t modeOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0);
  return status.st_mode & 07777;
}

TEST_F(WholeFile, PermissionsAreKept) {
  writeBytes(path, "old");
  ::chmod(path.c_str(), 0624);
  EXPECT_TRUE(replaceWholeFile(path.c_str(), "new"));
  EXPECT_EQ(modeOf(path), 0624u);
  EXPECT_EQ(bytesOf(path), "new");
}

TEST_F(WholeFile, NewFileHasThePermissionsOfTheUmask) {
  const mode_t mask = ::umask(027);
  EXPECT_TRUE(replaceWholeFile(path.c_str(), "new"));
  ::umask(mask);
  EXPECT_EQ(modeOf(path), 0640u);
}

TEST_F(WholeFile, OwnerIsKeptWhereTheProcessMaySetIt) {
  writeBytes(path, "old");
  if (::chown(path.c_str(), 1234, 2345) != 0) {
    GTEST_SKIP() << "only root may give files away";
  }
  EXPECT_TRUE(replaceWholeFile(path.c_str(), "new"));
  struct stat status {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, 1234u);
  EXPECT_EQ(status.st_gid, 2345u);
}

TEST_F(WholeFile, LinkIsFollowedAndKept) {
  fs::create_directory(folder.path() / "inner");
  const std::string target = folder.file("inner/target.ini");
  writeBytes(target, "old");
  fs::create_symlink("inner/hop.ini", path);  // relative to the link's own folder
  fs::create_symlink(target, folder.file("inner/hop.ini"));
  EXPECT_TRUE(replaceWholeFile(path.c_str(), "new"));
  EXPECT_TRUE(fs::is_symlink(path));
  EXPECT_TRUE(fs::is_symlink(folder.file("inner/hop.ini")));
  EXPECT_FALSE(fs::is_symlink(target));
  EXPECT_EQ(bytesOf(target), "new");
}

TEST_F(WholeFile, DanglingLinkCreatesItsTarget) {
  fs::create_symlink("target.ini", path);
  EXPECT_TRUE(replaceWholeFile(path.c_str(), "new"));
  EXPECT_TRUE(fs::is_symlink(path));
  EXPECT_EQ(bytesOf(folder.file("target.ini")), "new");
}

TEST_F(WholeFile, CircularLinksFail) {
  fs::create_symlink("other.ini", path);
  fs::create_symlink("camera.ini", folder.file("other.ini"));
  EXPECT_FALSE(replaceWholeFile(path.c_str(), "new"));
  std::string content;
  EXPECT_EQ(readWholeFile(path.c_str(), content), FileState::kUnreadable);
  EXPECT_EQ(folder.entryCount(), 2);
}

TEST_F(WholeFile, ReadOnlyFileBehindALinkFails) {
  const std::string target = folder.file("target.ini");
  writeBytes(target, "old");
  ::chmod(target.c_str(), 0444);
  fs::create_symlink("target.ini", path);
  EXPECT_FALSE(replaceWholeFile(path.c_str(), "new"));
  EXPECT_EQ(bytesOf(target), "old");
  EXPECT_EQ(folder.entryCount(), 2);
}

TEST_F(WholeFile, FileInTheWorkingFolderNeedsNoFolderName) {
  const fs::path before = fs::current_path();
  fs::current_path(folder.path());
  EXPECT_TRUE(replaceWholeFile("camera.ini", "new"));
  fs::current_path(before);
  EXPECT_EQ(bytesOf(path), "new");
}

TEST_F(WholeFile, PipeIsNeitherReadNorReplaced) {
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  std::string content;
  EXPECT_EQ(readWholeFile(path.c_str(), content), FileState::kUnreadable);
  EXPECT_FALSE(replaceWholeFile(path.c_str(), "new"));
  EXPECT_TRUE(fs::is_fifo(path));
  EXPECT_EQ(folder.entryCount(), 1);
}

// A device of our own: should this fail, the system's must not suffer.
TEST_F(WholeFile, DeviceIsNeitherReadNorReplaced) {
  constexpr dev_t zeroDevice = 0x105;
  if (::mknod(path.c_str(), S_IFCHR | 0600, zeroDevice) != 0) {
    GTEST_SKIP() << "only root may make devices";
  }
  std::string content;
  EXPECT_EQ(readWholeFile(path.c_str(), content), FileState::kUnreadable);
  EXPECT_FALSE(replaceWholeFile(path.c_str(), "new"));
  EXPECT_TRUE(fs::is_character_file(path));
  EXPECT_EQ(folder.entryCount(), 1);
}

TEST_F(WholeFile, OddPathsFail) {
  for (const std::string& odd :
       {std::string(), folder.path().string() + "/", folder.file("."), folder.file(".."),
        folder.file("missing/"), folder.file(std::string(256, 'n')), std::string(10000, 'n')}) {
    EXPECT_FALSE(replaceWholeFile(odd.c_str(), "new")) << odd;
  }
  EXPECT_EQ(folder.entryCount(), 0);
}

TEST_F(WholeFile, PathsFarBeyond260CharactersWork) {
  std::string longPath = folder.path().string();
  while (longPath.size() < 3500) {
    longPath.append("/").append(100, 'd');
  }
  fs::create_directories(longPath);
  longPath.append("/").append(255, 'n');  // the longest name that there is
  EXPECT_TRUE(replaceWholeFile(longPath.c_str(), "new"));
  std::string content;
  EXPECT_EQ(readWholeFile(longPath.c_str(), content), FileState::kRead);
  EXPECT_EQ(content, "new");
}

TEST_F(WholeFile, FileTooLargeForAParameterFileIsNeitherReadNorReplaced) {
  writeBytes(path, "[S]\r\na=1\r\n");
  constexpr std::uintmax_t gigabyte = 1 << 30;
  fs::resize_file(path, gigabyte);  // takes no space
  const char* key = "a";
  EXPECT_EQ(platform::readProfileValues(path.c_str(), "S", {&key, 1}).front(), "");
  const platform::ProfileEntry entry{"a", "2"};
  EXPECT_FALSE(platform::writeProfileValues(path.c_str(), "S", {&entry, 1}));
  EXPECT_EQ(fs::file_size(path), gigabyte);
  EXPECT_EQ(folder.entryCount(), 1);
}

TEST_F(WholeFile, LeftoversOfKilledSavesAreNotTouched) {
  const std::string leftover =
      folder.file(std::string(".profile-").append(std::to_string(::getpid())).append("-0.tmp"));
  writeBytes(leftover, "leftover");
  EXPECT_TRUE(replaceWholeFile(path.c_str(), "new"));
  EXPECT_EQ(bytesOf(path), "new");
  EXPECT_EQ(bytesOf(leftover), "leftover");
  EXPECT_EQ(folder.entryCount(), 2);
}

TEST_F(WholeFile, ArbitraryBytesAreReadBack) {
  std::string all;
  for (int i = 0; i < 256; ++i) {
    all.push_back(static_cast<char>(i));
  }
  EXPECT_TRUE(replaceWholeFile(path.c_str(), all));
  std::string content = "something else";
  EXPECT_EQ(readWholeFile(path.c_str(), content), FileState::kRead);
  EXPECT_EQ(content, all);
}

}  // namespace
