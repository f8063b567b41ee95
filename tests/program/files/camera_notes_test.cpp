#include "files/camera_notes.h"

#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

CameraNotes sample() {
  CameraNotes notes{.image = Size{1920, 1208},
                    .corrected = Size{2400, 1600},
                    .insideTarget = 0.375,
                    .onBed = 1.25};
  notes.lensCovariance.emplace();
  for (int i = 0; i < 36; ++i) {
    notes.lensCovariance->push_back(i / 7.0 - 1e-9);
  }
  return notes;
}

TEST(CameraNotes, AreReadBackExactly) { EXPECT_EQ(notesIn(withNotes("", sample())), sample()); }

TEST(CameraNotes, StandInASectionOfTheirOwn) {
  EXPECT_EQ(withNotes("", {.corrected = Size{640, 480}, .onBed = 1.5}),
            "[FisheyeCalibrationProgram]\r\n"
            "CorrectedWidth=640\r\n"
            "CorrectedHeight=480\r\n"
            "BedErrorOnBed=1.5\r\n"
            "Record=cbf29ce484222325\r\n");  // FNV-1a of nothing
}

TEST(CameraNotes, ReplaceEarlierOnesAndKeepEverythingElse) {
  const std::string before =
      "; mine\r\n[CalibraionParam]\r\nu0=1\r\n[fisheyecalibrationprogram]\r\nBedErrorOnBed=9\r\n"
      "Old=1\r\n[Other]\r\na=b";
  EXPECT_EQ(withNotes(before, {.onBed = 2}),
            "; mine\r\n[CalibraionParam]\r\nu0=1\r\n[Other]\r\na=b\r\n"
            "[FisheyeCalibrationProgram]\r\nBedErrorOnBed=2\r\nRecord=1744c56d32860ff8\r\n");
}

TEST(CameraNotes, OnesAboutAnotherRecordAreOutdated) {
  const std::string text = withNotes("[CalibraionParam]\r\nu0=1\r\nv0=2\r\n", sample());
  EXPECT_EQ(notesIn(text), sample());
  for (const auto& [before, after] : {std::pair("u0=1", "u0=1.5"), {"v0=2\r\n", ""}}) {
    std::string changed = text;
    changed.replace(changed.find(before), std::string(before).size(), after);
    EXPECT_TRUE(notesIn(changed).outdated) << before;
    EXPECT_FALSE(notesIn(changed).corrected) << before;
  }
  // Line ends and further sections do not belong to the record.
  EXPECT_EQ(notesIn("; comment\n[Other]\nu0=9\n" + text), sample());
}

TEST(CameraNotes, IncompleteOnesAreLeftOut) {
  const CameraNotes notes = notesIn(
      "[FisheyeCalibrationProgram]\nImageWidth=100\nCorrectedWidth=0\nCorrectedHeight=5\n"
      "BedErrorOnBed=much\nLensCovariance=1,2,3\n");
  EXPECT_EQ(notes, CameraNotes());
  EXPECT_EQ(notesIn("[CalibraionParam]\nu0=1\n"), CameraNotes());
}

}  // namespace
}  // namespace fisheye_calibration::program
