#include <gtest/gtest.h>

#include <limits>

#include "fisheye_calibration.h"
#include "support/temporary_folder.h"

namespace {

using support::bytesOf;
using support::writeBytes;

DualFishEyeCalibrationParam sampleParam() {
  DualFishEyeCalibrationParam param{};
  param.Pixel = 1.0f / 3.0f;
  param.StdImageWidth = 4096;
  param.StdImageHeight = std::numeric_limits<std::int32_t>::max();
  param.DatumImagePtX = -17;
  param.DatumImagePtY = std::numeric_limits<std::int32_t>::min();
  param.DatumPtXw = 12.75f;
  param.DatumPtYw = -3.5f;
  return param;
}

constexpr const char* sampleBytes =
    "[DualCamerasCalibraionParam]\r\n"
    "Pixel=0.333333\r\n"
    "StdImageWidth=4096\r\n"
    "StdImageHeight=2147483647\r\n"
    "DatumImagePtX=-17\r\n"
    "DatumImagePtY=-2147483648\r\n"
    "DatumPtXw=12.750000\r\n"
    "DatumPtYw=-3.500000\r\n";

class DualCameraFile : public testing::Test {
 protected:
  DualFishEyeCalibrationParam load(std::string_view bytes) {
    writeBytes(path, bytes);
    return load();
  }

  DualFishEyeCalibrationParam load() const {
    DualFishEyeCalibrationParam param = sampleParam();  // what a load leaves would show
    EXPECT_TRUE(LoadDualCamerasCalibrationParam(path.c_str(), param));
    return param;
  }

  support::TemporaryFolder folder;
  const std::string path = folder.file("dual.ini");
};

void expectAllZero(const DualFishEyeCalibrationParam& param) {
  EXPECT_EQ(param.Pixel, 0.0f);
  EXPECT_EQ(param.StdImageWidth, 0);
  EXPECT_EQ(param.StdImageHeight, 0);
  EXPECT_EQ(param.DatumImagePtX, 0);
  EXPECT_EQ(param.DatumImagePtY, 0);
  EXPECT_EQ(param.DatumPtXw, 0.0f);
  EXPECT_EQ(param.DatumPtYw, 0.0f);
}

TEST_F(DualCameraFile, NewFileHoldsTheHeaderAndSevenKeysInOrder) {
  EXPECT_TRUE(SaveDualCamerasCalibrationParam(path.c_str(), sampleParam()));
  EXPECT_EQ(bytesOf(path), sampleBytes);
}

TEST_F(DualCameraFile, SaveAndLoadTruncateTheDatum) {
  EXPECT_TRUE(SaveDualCamerasCalibrationParam(path.c_str(), sampleParam()));
  const DualFishEyeCalibrationParam param = load();
  EXPECT_EQ(param.Pixel, 0.333333f);
  EXPECT_EQ(param.StdImageWidth, 4096);
  EXPECT_EQ(param.StdImageHeight, std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(param.DatumImagePtX, -17);
  EXPECT_EQ(param.DatumImagePtY, std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(param.DatumPtXw, 12.0f);
  EXPECT_EQ(param.DatumPtYw, -3.0f);
}

TEST_F(DualCameraFile, IntegerWithDecimalsIsTruncated) {
  EXPECT_EQ(load("[DualCamerasCalibraionParam]\r\nStdImageWidth=12.9\r\n").StdImageWidth, 12);
}

TEST_F(DualCameraFile, DatumIsNotReadAsAFloatingPointNumber) {
  const DualFishEyeCalibrationParam param =
      load("[DualCamerasCalibraionParam]\r\nPixel=1e2\r\nDatumPtXw=1e2\r\nDatumPtYw=.9\r\n");
  EXPECT_EQ(param.Pixel, 100.0f);
  EXPECT_EQ(param.DatumPtXw, 1.0f);
  EXPECT_EQ(param.DatumPtYw, 0.0f);
}

TEST_F(DualCameraFile, MissingFileLoadsAsZerosAndIsNotCreated) {
  expectAllZero(load());
  EXPECT_EQ(folder.entryCount(), 0);
}

TEST_F(DualCameraFile, SectionSpelledCorrectlyLoadsAsZeros) {
  expectAllZero(load("[DualCamerasCalibrationParam]\r\nPixel=1\r\nStdImageWidth=4\r\n"));
}

TEST_F(DualCameraFile, NullPathLoadsAsZerosAndSavesNothing) {
  DualFishEyeCalibrationParam param = sampleParam();
  EXPECT_TRUE(LoadDualCamerasCalibrationParam(nullptr, param));
  expectAllZero(param);
  EXPECT_TRUE(SaveDualCamerasCalibrationParam(nullptr, sampleParam()));
}

TEST_F(DualCameraFile, MissingKeySetsOnlyItsOwnFieldToZero) {
  const DualFishEyeCalibrationParam param =
      load("[DualCamerasCalibraionParam]\r\nPixel=0.5\r\nStdImageHeight=8\r\nDatumPtYw=3\r\n");
  EXPECT_EQ(param.Pixel, 0.5f);
  EXPECT_EQ(param.StdImageWidth, 0);
  EXPECT_EQ(param.StdImageHeight, 8);
  EXPECT_EQ(param.DatumPtXw, 0.0f);
  EXPECT_EQ(param.DatumPtYw, 3.0f);
}

TEST_F(DualCameraFile, NonNumericTextIsZero) {
  expectAllZero(
      load("[DualCamerasCalibraionParam]\r\nPixel=x\r\nStdImageWidth=wide\r\nStdImageHeight=\r\n"
           "DatumImagePtX=--4\r\nDatumImagePtY=#\r\nDatumPtXw=inf\r\nDatumPtYw=nan\r\n"));
}

TEST_F(DualCameraFile, IntegersBeyond32BitsSaturate) {
  const DualFishEyeCalibrationParam param = load(
      "[DualCamerasCalibraionParam]\r\nStdImageWidth=4294967297\r\n"
      "StdImageHeight=-99999999999999999999999\r\nDatumPtXw=2147483648\r\n");
  EXPECT_EQ(param.StdImageWidth, std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(param.StdImageHeight, std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(param.DatumPtXw, 2147483648.0f) << "2147483647 rounded to 32-bit float";
}

TEST_F(DualCameraFile, ValueIsCutTo127Characters) {
  EXPECT_EQ(load("[DualCamerasCalibraionParam]\r\nStdImageWidth=" + std::string(126, '0') +
                 "12\r\nStdImageHeight=3\r\n")
                .StdImageWidth,
            1);
  EXPECT_EQ(load().StdImageHeight, 3);
}

TEST_F(DualCameraFile, SaveWithoutAFolderOrOntoAReadOnlyFileIsTrueAndWritesNothing) {
  EXPECT_TRUE(
      SaveDualCamerasCalibrationParam(folder.file("missing/dual.ini").c_str(), sampleParam()));
  EXPECT_EQ(folder.entryCount(), 0);
  writeBytes(path, "old");
  const support::ReadOnlyFile readOnly(path);
  if (!readOnly.isRespected()) GTEST_SKIP() << "This user may write to read-only files";
  EXPECT_TRUE(SaveDualCamerasCalibrationParam(path.c_str(), sampleParam()));
  EXPECT_EQ(bytesOf(path), "old");
  EXPECT_EQ(folder.entryCount(), 1);
}

TEST_F(DualCameraFile, BothSectionsInOneFileDoNotInterfere) {
  FishEyeCalibrationParam camera{};
  camera.Pixel = 2.0f;
  camera.DatumPtXw = 1.5f;
  EXPECT_TRUE(SaveCalibrationParam(path.c_str(), camera));
  const std::string cameraBytes = bytesOf(path);
  EXPECT_TRUE(SaveDualCamerasCalibrationParam(path.c_str(), sampleParam()));
  EXPECT_EQ(bytesOf(path), cameraBytes + sampleBytes);
  EXPECT_TRUE(SaveCalibrationParam(path.c_str(), camera));
  EXPECT_EQ(bytesOf(path), cameraBytes + sampleBytes);
  FishEyeCalibrationParam loaded{};
  EXPECT_TRUE(LoadCalibrationParam(path.c_str(), loaded));
  EXPECT_EQ(loaded.Pixel, 2.0f);
  EXPECT_EQ(loaded.DatumPtXw, 1.5f);
  EXPECT_EQ(load().Pixel, 0.333333f);
}

}  // namespace
