#include "files/iso_boxes.h"

#include <gtest/gtest.h>

#include <string>

#include "program/support/run_program.h"

namespace fisheye_calibration::program {
namespace {

std::string box(const std::string& type, const std::string& content) {
  const std::size_t size = 8 + content.size();
  std::string bytes = {'\0', '\0', static_cast<char>(size / 256), static_cast<char>(size % 256)};
  return bytes.append(type).append(content);
}

class IsoBoxes : public testing::Test {
 protected:
  bool whole(const std::string& bytes) { return holdsWholeBoxes(writeFile(folder, "a", bytes)); }

  support::TemporaryFolder folder;
  std::string film = box("ftyp", "isom") + box("moov", std::string(300, 'm')) + box("mdat", "data");
};

TEST_F(IsoBoxes, AFileOfWholeBoxesIsWhole) {
  EXPECT_TRUE(whole(film));
  EXPECT_TRUE(whole(film + box("free", "")));
  EXPECT_TRUE(whole(film + std::string("\0\0\0\0mdat and the rest", 21)));
}

TEST_F(IsoBoxes, SizesMayHave64Bits) {
  const std::string header("\0\0\0\1mdat\0\0\0\0\0\0\0\24", 16);  // 16 bytes of header, 4 of data
  EXPECT_TRUE(whole(film + header + "data"));
  EXPECT_FALSE(whole(film + header + "dat"));
  EXPECT_FALSE(whole(film + header + "data and more"));
  EXPECT_FALSE(whole(film + std::string("\0\0\0\1mdat\0\0\0\0\0\0\0\17", 16)));
  EXPECT_FALSE(whole(film + std::string("\0\0\0\1mdat\377\377\377\377\377\377\377\377", 16)));
}

TEST_F(IsoBoxes, WhatHasBeenCutOffIsNotWhole) {
  for (std::size_t length = 0; length < film.size(); ++length) {
    const bool isBetweenBoxes = length == 12 || length == 320;
    EXPECT_EQ(whole(film.substr(0, length)), isBetweenBoxes) << length;
  }
}

TEST_F(IsoBoxes, OtherFilesAreNotWhole) {
  EXPECT_FALSE(whole("no film at all"));
  EXPECT_FALSE(whole(std::string("\0\0\0\7free", 8)));
  EXPECT_FALSE(holdsWholeBoxes(folder.file("missing")));
}

}  // namespace
}  // namespace fisheye_calibration::program
