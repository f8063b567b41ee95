// What the replacement of the Windows profile functions leaves unchanged, and properties that hold
// for any text.
#include "platform/profile_text.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cctype>
#include <vector>

using namespace fisheye_calibration;

namespace {

using platform::profileValue;
using platform::setProfileValue;

std::string written(std::string text, std::string_view section, std::string_view key,
                    std::string_view value) {
  setProfileValue(text, section, key, value);
  return text;
}

TEST(ProfileText, UntouchedLinesKeepTheirEndsAndBlanks) {
  EXPECT_EQ(written("[S] \n  x = 1  \ra=1\nb= 2 \n", "S", "a", "9"),
            "[S] \n  x = 1  \ra=9\r\nb= 2 \n");
}

TEST(ProfileText, NewKeyGoesBeforeTheBlankLinesThatSeparateSections) {
  EXPECT_EQ(written("[S]\na=1\n\n \t\n[T]\nx=1\n", "S", "b", "2"),
            "[S]\na=1\nb=2\r\n\n \t\n[T]\nx=1\n");
}

TEST(ProfileText, NewSectionGoesAfterTrailingBlankLines) {
  EXPECT_EQ(written("[S]\na=1\n\n", "T", "b", "2"), "[S]\na=1\n\n[T]\r\nb=2\r\n");
}

TEST(ProfileText, BlanksAroundAWrittenValueAreNotWritten) {
  EXPECT_EQ(written("", " S", "b\t", "  x\t "), "[S]\r\nb=x\r\n");
}

TEST(ProfileText, ByteOrderMarkDoesNotHideTheFirstSection) {
  EXPECT_EQ(profileValue("\xEF\xBB\xBF[S]\na=1\n", "S", "a"), "1");
  EXPECT_EQ(written("\xEF\xBB\xBF[S]\na=1\n", "S", "a", "2"), "\xEF\xBB\xBF[S]\na=2\r\n");
}

TEST(ProfileText, ValueEndsAtANulByte) {
  using namespace std::string_view_literals;
  constexpr std::string_view text = "[S]\r\na=1 \0002\r\nb\0=3\r\nc=4\0\r\nd=5\r\n"sv;
  EXPECT_EQ(profileValue(text, "S", "a"), "1");
  EXPECT_EQ(profileValue(text, "S", "c"), "4");
  EXPECT_EQ(profileValue(text, "S", "d"), "5");
}

TEST(ProfileText, OnlyAsciiLettersIgnoreCase) {
  EXPECT_EQ(profileValue("[S]\n\xC4=1\n", "S", "\xE4"), "");
  EXPECT_EQ(profileValue("[S]\n@=1\n", "S", "`"), "");
}

// Random text made of the pieces that matter.
rc::Gen<std::string> anyText() {
  return rc::gen::map(
      rc::gen::container<std::vector<std::string>>(rc::gen::elementOf(
          std::vector<std::string>{"[S]", "[s]",  "[ T ]", "[U",   "]",
                                   "a",   "A ",   "b",     "ab",   "=",
                                   "=1",  "= 2 ", ";",     "#",    "\"",
                                   "'",   " ",    "\t",    "\r\n", "\r\n",
                                   "\n",  "\n",   "\r",    "\xC4", std::string(1, '\0')})),
      [](const std::vector<std::string>& pieces) {
        std::string text;
        for (const std::string& piece : pieces) {
          text += piece;
        }
        return text;
      });
}

rc::Gen<std::string> anyName() {
  return rc::gen::elementOf(std::vector<std::string>{"a", "B", "c"});
}

rc::Gen<std::string> anySection() {
  return rc::gen::elementOf(std::vector<std::string>{"S", "t", "V"});
}

// Lines without their ends, counted by hand so that nothing is shared with the code under test.
std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines{""};
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' || text[i] == '\n') {
      i += text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n' ? 1 : 0;
      lines.emplace_back();
    } else {
      lines.back() += text[i];
    }
  }
  if (lines.back().empty()) {
    lines.pop_back();
  }
  return lines;
}

RC_GTEST_PROP(ProfileTextProperty, WrittenValueIsReadBack, ()) {
  const auto text = *anyText();
  const auto section = *anySection();
  const auto key = *anyName();
  const std::string value = std::to_string(*rc::gen::arbitrary<int>());
  RC_ASSERT(profileValue(written(text, section, key, value), section, key) == value);
}

RC_GTEST_PROP(ProfileTextProperty, AllOtherLinesStay, ()) {
  const auto text = *anyText();
  const std::string result = written(text, *anySection(), *anyName(), "12345");
  const auto before = linesOf(text);
  const auto after = linesOf(result);
  std::size_t front = 0;
  while (front < before.size() && front < after.size() && before[front] == after[front]) {
    ++front;
  }
  std::size_t back = 0;
  while (back < before.size() - front && back < after.size() - front &&
         before[before.size() - 1 - back] == after[after.size() - 1 - back]) {
    ++back;
  }
  const std::size_t removed = before.size() - front - back;
  const std::size_t added = after.size() - front - back;
  const bool rewritten = removed == 1 && added == 1;
  const bool keyAdded = removed == 0 && added == 1;
  const bool sectionAdded = removed == 0 && added == 2;
  RC_ASSERT(rewritten || keyAdded || sectionAdded);
}

RC_GTEST_PROP(ProfileTextProperty, OtherKeysKeepTheirValues, ()) {
  const auto text = *anyText();
  const auto section = *anySection();
  const auto key = *anyName();
  const std::string result = written(text, section, key, "12345");
  for (const char* otherSection : {"S", "T", "V"}) {
    for (const char* otherKey : {"a", "b", "c", "ab"}) {
      const bool same = std::tolower(section[0]) == std::tolower(otherSection[0]) &&
                        std::string(1, static_cast<char>(std::tolower(key[0]))) == otherKey;
      if (!same) {
        RC_ASSERT(profileValue(result, otherSection, otherKey) ==
                  profileValue(text, otherSection, otherKey));
      }
    }
  }
}

RC_GTEST_PROP(ProfileTextProperty, WritingTheSameAgainChangesNothing, ()) {
  const auto section = *anySection();
  const auto key = *anyName();
  const std::string once = written(*anyText(), section, key, "1");
  RC_ASSERT(written(once, section, key, "1") == once);
}

}  // namespace
