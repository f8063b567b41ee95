// How profile files are read, on every system: against Windows' own functions there, against the
// replacement elsewhere.
#include <gtest/gtest.h>

#include "platform/profile_file.h"
#include "support/temporary_folder.h"

using namespace fisheye_calibration;

namespace {

class ProfileReading : public testing::Test {
 protected:
  std::string read(std::string_view content, const char* section, const char* key) {
    support::writeBytes(path, content);
    return read(section, key);
  }

  std::string read(const char* section, const char* key) const {
    return platform::readProfileValues(path.c_str(), section, {&key, 1}).front();
  }

  support::TemporaryFolder folder;
  const std::string path = folder.file("profile.ini");
};

TEST_F(ProfileReading, NamesIgnoreCaseAndBlanksInTheFile) {
  EXPECT_EQ(read("[ SeC ]\r\n KeY =Val\r\n", "sec", "key"), "Val");
  EXPECT_EQ(read("\t[\tSeC ]\r\n\tKeY\t= Val\r\n", "SEC", "KEY"), "Val");
}

TEST_F(ProfileReading, BlanksAroundRequestedNamesAreIgnored) {
  EXPECT_EQ(read("[S]\r\na=1\r\n", " S ", " a "), "1");
}

TEST_F(ProfileReading, BlanksAndTabsAroundAValueAreRemoved) {
  EXPECT_EQ(read("[S]\r\na= \t v w\t \r\n", "S", "a"), "v w");
}

TEST_F(ProfileReading, OneMatchingOuterPairOfQuotesIsRemoved) {
  EXPECT_EQ(read("[S]\r\na= \" v \"\r\n", "S", "a"), " v ");
  EXPECT_EQ(read("[S]\r\na=' v '\r\n", "S", "a"), " v ");
  EXPECT_EQ(read("[S]\r\na='\"v\"'\r\n", "S", "a"), "\"v\"");
  EXPECT_EQ(read("[S]\r\na=\"\"\r\n", "S", "a"), "");
}

TEST_F(ProfileReading, QuotesThatDoNotMatchOrDoNotEncloseStay) {
  EXPECT_EQ(read("[S]\r\na=\"v'\r\n", "S", "a"), "\"v'");
  EXPECT_EQ(read("[S]\r\na=\"v\" w\r\n", "S", "a"), "\"v\" w");
  EXPECT_EQ(read("[S]\r\na=\"\r\n", "S", "a"), "\"");
}

TEST_F(ProfileReading, FirstSectionAndFirstKeyWin) {
  const char* content = "[S]\r\na=1\r\na=2\r\n[S]\r\nb=3\r\na=4\r\n";
  EXPECT_EQ(read(content, "S", "a"), "1");
  EXPECT_EQ(read(content, "S", "b"), "") << "the second section of the name is not looked at";
}

TEST_F(ProfileReading, EmptyFirstKeyIsAValueAndHidesALaterOne) {
  EXPECT_EQ(read("[S]\r\na=\r\na=2\r\n", "S", "a"), "");
}

TEST_F(ProfileReading, LineWithoutEqualsSignIsNoKey) {
  EXPECT_EQ(read("[S]\r\na\r\nb=\r\n", "S", "a"), "");
}

TEST_F(ProfileReading, OnlyTheFirstEqualsSignSplits) {
  const char* content = "[S]\r\nd=x=y\r\nc==1\r\n";
  EXPECT_EQ(read(content, "S", "d"), "x=y");
  EXPECT_EQ(read(content, "S", "c"), "=1");
}

TEST_F(ProfileReading, CommentSignsInAValueArePartOfIt) {
  const char* content = "[S]\r\n;a=1\r\na=3 ; tail\r\nb=4 # tail\r\n";
  EXPECT_EQ(read(content, "S", "a"), "3 ; tail");
  EXPECT_EQ(read(content, "S", "b"), "4 # tail");
}

TEST_F(ProfileReading, CommentedKeyIsNotFound) {
  EXPECT_EQ(read("[S]\r\n;a=1\r\n ; b=2\r\n", "S", "a"), "");
  EXPECT_EQ(read("S", "b"), "");
}

TEST_F(ProfileReading, KeysBeforeTheFirstSectionBelongToNone) {
  EXPECT_EQ(read("a=1\r\n[S]\r\nb=2\r\n", "S", "a"), "");
}

TEST_F(ProfileReading, TextAfterAHeaderIsIgnored) {
  EXPECT_EQ(read("[T]x\r\na=1\r\n", "T", "a"), "1");
}

TEST_F(ProfileReading, UnclosedHeaderOpensNoSection) {
  const char* content = "[T]\r\na=1\r\n[U\r\nb=2\r\n";
  EXPECT_EQ(read(content, "U", "b"), "");
  EXPECT_EQ(read(content, "T", "b"), "2") << "the section before goes on";
}

TEST_F(ProfileReading, AnyLineEndIsAccepted) {
  for (const char* content : {"[S]\r\na=1\r\nb=2\r\n", "[S]\na=1\nb=2\n", "[S]\ra=1\rb=2\r",
                              "[S]\r\na=1\r\nb=2", "\n\r\n[S]\n\na=1\r\n\r\nb=2\r"}) {
    EXPECT_EQ(read(content, "S", "a"), "1") << content;
    EXPECT_EQ(read(content, "S", "b"), "2") << content;
  }
}

TEST_F(ProfileReading, ValueIsCutTo127Characters) {
  EXPECT_EQ(read("[S]\r\na=" + std::string(128, '7') + "\r\nb=2\r\n", "S", "a"),
            std::string(127, '7'));
  EXPECT_EQ(read("S", "b"), "2");
}

TEST_F(ProfileReading, QuotesDoNotCountTowardTheMaximumLength) {
  EXPECT_EQ(read("[S]\r\na=\"" + std::string(200, '7') + "\"\r\n", "S", "a"),
            std::string(127, '7'));
}

TEST_F(ProfileReading, VeryLongLinesDoNotAffectOtherKeys) {
  const std::string megabyte(1 << 20, 'x');
  const std::string content =
      "; " + megabyte + "\r\n[S]\r\n" + megabyte + "=1\r\na=" + megabyte + "\r\nb=2\r\n";
  EXPECT_EQ(read(content, "S", "b"), "2");
  EXPECT_EQ(read("S", "a"), std::string(127, 'x'));
}

TEST_F(ProfileReading, PrefixOfAKeyIsAnotherKey) {
  const char* content = "[S]\r\nR1x=1\r\nR1=2\r\nR=3\r\n";
  EXPECT_EQ(read(content, "S", "R1"), "2");
  EXPECT_EQ(read(content, "S", "R"), "3");
}

// In the system's code page, that is: the UTF-8 text, too, is made of characters of GBK.
TEST_F(ProfileReading, BytesAbove127AreReturnedUnchanged) {
  EXPECT_EQ(read("[S]\r\na=\xB1\xEA\xB6\xA8\r\nb=\xE6\xA0\x87\xE5\xAE\x9A\r\n", "S", "a"),
            "\xB1\xEA\xB6\xA8");
  EXPECT_EQ(read("S", "b"), "\xE6\xA0\x87\xE5\xAE\x9A");
}

TEST_F(ProfileReading, MissingFileSectionOrKeyIsEmptyAndCreatesNothing) {
  EXPECT_EQ(read("S", "a"), "");
  EXPECT_EQ(folder.entryCount(), 0);
  EXPECT_EQ(read("[T]\r\na=1\r\n", "S", "a"), "");
  EXPECT_EQ(read("[S]\r\na=1\r\n", "S", "b"), "");
}

TEST_F(ProfileReading, FileIsReadAgainOnEveryCall) {
  EXPECT_EQ(read("[S]\r\na=1\r\n", "S", "a"), "1");
  EXPECT_EQ(read("[S]\r\na=2\r\n", "S", "a"), "2");
}

TEST_F(ProfileReading, SeveralKeysAreReturnedInTheRequestedOrder) {
  support::writeBytes(path, "[S]\r\na=1\r\nb=2\r\n");
  const char* const keys[] = {"b", "missing", "a"};
  EXPECT_EQ(platform::readProfileValues(path.c_str(), "S", keys),
            (std::vector<std::string>{"2", "", "1"}));
}

TEST_F(ProfileReading, NullPathReadsAsAMissingFile) {
  const char* key = "a";
  EXPECT_EQ(platform::readProfileValues(nullptr, "S", {&key, 1}).front(), "");
}

TEST_F(ProfileReading, FolderReadsAsAMissingFile) {
  const char* key = "a";
  EXPECT_EQ(platform::readProfileValues(folder.path().string().c_str(), "S", {&key, 1}).front(),
            "");
}

}  // namespace
