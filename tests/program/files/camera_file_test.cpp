#include "files/camera_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/failure.h"
#include "base/record_fields.h"
#include "program/support/run_program.h"
#include "program/support/sample_record.h"

namespace fisheye_calibration::program {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string completeText(const std::string& value) {
  std::string text = "; a comment\n[CalibraionParam]\n";
  for (const RecordField& field : recordFields()) {
    text += std::string(field.name) + "=" + value + "\n";
  }
  return text;
}

TEST(CameraFile, ACompleteTextRaisesNothing) {
  EXPECT_THAT(inspectCameraText("c.ini", completeText("1.5")), IsEmpty());
}

TEST(CameraFile, AMissingSectionIsBadInput) {
  try {
    inspectCameraText("c.ini", "[CalibrationParam]\nu0=1\n");
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.code(), kExitBadInput);
    EXPECT_THAT(failure.what(), HasSubstr("no section [CalibraionParam]"));
  }
}

TEST(CameraFile, EncodingsThatTheLibraryDoesNotReadAreNamed) {
  const auto failureOf = [](const std::string& text) -> std::string {
    try {
      inspectCameraText("c.ini", text);
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.code(), kExitBadInput);
      return failure.what();
    }
    return "no failure";
  };
  EXPECT_THAT(failureOf("\xEF\xBB\xBF[CalibraionParam]\nu0=1\n"), HasSubstr("a byte-order mark"));
  EXPECT_THAT(failureOf(std::string("\xFF\xFE[\0C\0", 6)), HasSubstr("c.ini: UTF-16 text"));
  // Before a comment the mark does no harm.
  EXPECT_THAT(inspectCameraText("c.ini", "\xEF\xBB\xBF" + completeText("1.5")), IsEmpty());
}

TEST(CameraFile, MissingKeysAreNamed) {
  std::string text = completeText("1");
  text.erase(text.find("fx="), 5);
  text.erase(text.find("Tz="), 5);
  EXPECT_THAT(inspectCameraText("c.ini", text),
              ElementsAre("c.ini: missing and read as 0: fx, Tz"));
}

TEST(CameraFile, KeysOfAnotherSectionDoNotCount) {
  std::string text = completeText("1");
  text.insert(text.find("fx="), "[Other]\n");
  EXPECT_THAT(inspectCameraText("c.ini", text), ElementsAre(HasSubstr("fx, fy, skewness")));
}

TEST(CameraFile, InvalidNumbersAreReportedWithTheirPosition) {
  std::string text = completeText("1");
  text.replace(text.find("v0=1"), 4, "v0 = 1,5");
  EXPECT_THAT(inspectCameraText("c.ini", text),
              ElementsAre(HasSubstr("c.ini:4:6: v0 is not a number: \"1,5\"; decimals")));
}

TEST(CameraFile, SavingKeepsOtherSectionsAndComments) {
  const support::TemporaryFolder folder;
  const std::string path = writeFile(folder, "c.ini", "; mine\n[Other]\nq=1\n");
  OutputFiles files;
  stageCamera(files, path, sampleRecord(), {.onBed = 0.5});
  EXPECT_EQ(support::bytesOf(path), "; mine\n[Other]\nq=1\n");
  files.commit();
  EXPECT_THAT(support::bytesOf(path), HasSubstr("; mine"));
  EXPECT_THAT(support::bytesOf(path), HasSubstr("q=1"));
  const CameraFile camera = loadCamera(path);
  EXPECT_THAT(camera.complaints, IsEmpty());
  EXPECT_EQ(camera.param.fx, 300.0f);
  EXPECT_EQ(camera.param.DatumPtYw, 90.0f);
}

}  // namespace
}  // namespace fisheye_calibration::program
