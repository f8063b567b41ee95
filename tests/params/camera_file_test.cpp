#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <vector>

#include "fisheye_calibration.h"
#include "support/temporary_folder.h"

namespace {

using support::bytesOf;
using support::writeBytes;

// Every field another number, chosen so that each rounding shows.
FishEyeCalibrationParam sampleParam() {
  FishEyeCalibrationParam param{};
  param.u0 = 640.5f;
  param.v0 = 481.0625f;
  param.fx = 812.3456789f;  // the nearest float is 812.345703125
  param.fy = 1234567.0f;
  param.skewness = -0.25f;
  param.k0 = 0.1234567890123456;
  param.k1 = -0.012345678901234567;
  param.k2 = 1.0 / 3.0;
  param.k3 = 0.1;
  param.k4 = 6e-16;
  param.k5 = 41.3;
  param.R1 = 1.0f / 3.0f;
  param.R2 = -2.0f / 3.0f;
  param.R3 = 0.0000004f;
  param.R4 = 0.0000006f;
  param.R5 = 1.0f;
  param.R6 = -1.0f;
  param.R7 = 0.5f;
  param.R8 = 0.125f;
  param.R9 = 0.0f;
  param.Rx = 3.0f;
  param.Ry = -3.25f;
  param.Rz = 0.75f;
  param.Tx = -100.5f;
  param.Ty = 200.25f;
  param.Tz = 812.0f;
  param.p1 = 1.0 / 3.0;
  param.p2 = -2.0 / 3.0;
  param.p3 = 123.456;
  param.p4 = 0.0001;
  param.p5 = 1.1;
  param.p6 = -0.7;
  param.p7 = 1e-7;
  param.p8 = 2.6e-15;
  param.p9 = 0.9;
  param.Pixel = 0.1f;
  param.DatumPtXw = 150.5f;
  param.DatumPtYw = 99.75f;
  param.ImageDx = -12.5f;
  param.ImageDy = 8.0f;
  return param;
}

constexpr const char* sampleBytes =
    "[CalibraionParam]\r\n"
    "u0=640.500000\r\n"
    "v0=481.062500\r\n"
    "fx=812.345703\r\n"
    "fy=1234567.000000\r\n"
    "skewness=-0.250000\r\n"
    "k0=0.123456789012346\r\n"
    "k1=-0.012345678901235\r\n"
    "k2=0.333333333333333\r\n"
    "k3=0.100000000000000\r\n"
    "k4=0.000000000000001\r\n"
    "k5=41.299999999999997\r\n"
    "R1=0.333333\r\n"
    "R2=-0.666667\r\n"
    "R3=0.000000\r\n"
    "R4=0.000001\r\n"
    "R5=1.000000\r\n"
    "R6=-1.000000\r\n"
    "R7=0.500000\r\n"
    "R8=0.125000\r\n"
    "R9=0.000000\r\n"
    "Rx=3.000000\r\n"
    "Ry=-3.250000\r\n"
    "Rz=0.750000\r\n"
    "Tx=-100.500000\r\n"
    "Ty=200.250000\r\n"
    "Tz=812.000000\r\n"
    "p1=0.333333333333333\r\n"
    "p2=-0.666666666666667\r\n"
    "p3=123.456000000000003\r\n"
    "p4=0.000100000000000\r\n"
    "p5=1.100000000000000\r\n"
    "p6=-0.700000000000000\r\n"
    "p7=0.000000100000000\r\n"
    "p8=0.000000000000003\r\n"
    "p9=0.900000000000000\r\n"
    "Pixel=0.100000\r\n"
    "DatumPtXw=150.500000\r\n"
    "DatumPtYw=99.750000\r\n"
    "ImageDx=-12.500000\r\n"
    "ImageDy=8.000000\r\n";

class CameraFile : public testing::Test {
 protected:
  FishEyeCalibrationParam load(std::string_view bytes) {
    writeBytes(path, bytes);
    return load();
  }

  FishEyeCalibrationParam load() const {
    FishEyeCalibrationParam param = sampleParam();  // what a load leaves would show
    EXPECT_TRUE(LoadCalibrationParam(path.c_str(), param));
    return param;
  }

  std::string saved(const FishEyeCalibrationParam& param) const {
    EXPECT_TRUE(SaveCalibrationParam(path.c_str(), param));
    return bytesOf(path);
  }

  support::TemporaryFolder folder;
  const std::string path = folder.file("camera.ini");
};

void expectAllZero(const FishEyeCalibrationParam& param) {
  for (const float value :
       {param.u0,    param.v0,        param.fx,        param.fy,      param.skewness,
        param.R1,    param.R2,        param.R3,        param.R4,      param.R5,
        param.R6,    param.R7,        param.R8,        param.R9,      param.Rx,
        param.Ry,    param.Rz,        param.Tx,        param.Ty,      param.Tz,
        param.Pixel, param.DatumPtXw, param.DatumPtYw, param.ImageDx, param.ImageDy}) {
    EXPECT_EQ(value, 0.0f);
  }
  for (const double value :
       {param.k0, param.k1, param.k2, param.k3, param.k4, param.k5, param.p1, param.p2, param.p3,
        param.p4, param.p5, param.p6, param.p7, param.p8, param.p9}) {
    EXPECT_EQ(value, 0.0);
  }
}

TEST_F(CameraFile, NewFileHoldsTheHeaderAndFortyKeysInOrder) {
  EXPECT_EQ(saved(sampleParam()), sampleBytes);
}

TEST_F(CameraFile, ThirtyTwoBitFieldsComeBackRoundedToSixDecimals) {
  saved(sampleParam());
  const FishEyeCalibrationParam param = load();
  EXPECT_EQ(param.u0, 640.5f);
  EXPECT_EQ(param.v0, 481.0625f);
  EXPECT_EQ(param.fx, 812.345703f);
  EXPECT_EQ(param.fy, 1234567.0f);
  EXPECT_EQ(param.skewness, -0.25f);
  EXPECT_EQ(param.R1, 0.333333f);
  EXPECT_EQ(param.R2, -0.666667f);
  EXPECT_EQ(param.R3, 0.0f);
  EXPECT_EQ(param.R4, 0.000001f);
  EXPECT_EQ(param.R5, 1.0f);
  EXPECT_EQ(param.R6, -1.0f);
  EXPECT_EQ(param.R7, 0.5f);
  EXPECT_EQ(param.R8, 0.125f);
  EXPECT_EQ(param.R9, 0.0f);
  EXPECT_EQ(param.Rx, 3.0f);
  EXPECT_EQ(param.Ry, -3.25f);
  EXPECT_EQ(param.Rz, 0.75f);
  EXPECT_EQ(param.Tx, -100.5f);
  EXPECT_EQ(param.Ty, 200.25f);
  EXPECT_EQ(param.Tz, 812.0f);
  EXPECT_EQ(param.Pixel, 0.1f);
  EXPECT_EQ(param.DatumPtXw, 150.5f);
  EXPECT_EQ(param.DatumPtYw, 99.75f);
  EXPECT_EQ(param.ImageDx, -12.5f);
  EXPECT_EQ(param.ImageDy, 8.0f);
}

TEST_F(CameraFile, DistortionComesBackInSinglePrecision) {
  saved(sampleParam());
  const FishEyeCalibrationParam param = load();
  EXPECT_EQ(param.k0, static_cast<double>(0.123456789012346f));
  EXPECT_EQ(param.k1, static_cast<double>(-0.012345678901235f));
  EXPECT_EQ(param.k2, static_cast<double>(0.333333333333333f));
  EXPECT_EQ(param.k3, static_cast<double>(0.1f));
  EXPECT_EQ(param.k4, static_cast<double>(1e-15f));
  EXPECT_EQ(param.k5, static_cast<double>(41.3f));
  EXPECT_NE(param.k0, 0.123456789012346);
}

TEST_F(CameraFile, HomographyComesBackAsWrittenWithFifteenDecimals) {
  saved(sampleParam());
  const FishEyeCalibrationParam param = load();
  EXPECT_EQ(param.p1, 0.333333333333333);
  EXPECT_EQ(param.p2, -0.666666666666667);
  EXPECT_EQ(param.p3, 123.456);
  EXPECT_EQ(param.p4, 0.0001);
  EXPECT_EQ(param.p5, 1.1);
  EXPECT_EQ(param.p6, -0.7);
  EXPECT_EQ(param.p7, 1e-7);
  EXPECT_EQ(param.p8, 3e-15);
  EXPECT_EQ(param.p9, 0.9);
}

TEST_F(CameraFile, SectionSpelledCorrectlyLoadsAsZeros) {
  std::string bytes = sampleBytes;
  bytes.replace(0, bytes.find('\r'), "[CalibrationParam]");
  expectAllZero(load(bytes));
}

TEST_F(CameraFile, MissingFileLoadsAsZerosAndIsNotCreated) {
  expectAllZero(load());
  EXPECT_EQ(folder.entryCount(), 0);
}

TEST_F(CameraFile, NullPathLoadsAsZeros) {
  FishEyeCalibrationParam param = sampleParam();
  EXPECT_TRUE(LoadCalibrationParam(nullptr, param));
  expectAllZero(param);
}

TEST_F(CameraFile, FolderLoadsAsZeros) {
  FishEyeCalibrationParam param = sampleParam();
  EXPECT_TRUE(LoadCalibrationParam(folder.path().string().c_str(), param));
  expectAllZero(param);
}

TEST_F(CameraFile, EmptyFileLoadsAsZeros) { expectAllZero(load("")); }

TEST_F(CameraFile, MissingKeySetsOnlyItsOwnFieldToZero) {
  std::string bytes = sampleBytes;
  const std::string line = "p2=-0.666666666666667\r\n";
  bytes.erase(bytes.find(line), line.size());
  const FishEyeCalibrationParam param = load(bytes);
  EXPECT_EQ(param.p1, 0.333333333333333);
  EXPECT_EQ(param.p2, 0.0);
  EXPECT_EQ(param.p3, 123.456);
  EXPECT_EQ(param.ImageDy, 8.0f);
}

TEST_F(CameraFile, NonNumericTextIsZero) {
  const FishEyeCalibrationParam param =
      load("[CalibraionParam]\r\nu0=abc\r\nv0=\r\nfx=,5\r\nfy=--5\r\nk0=x1\r\np1=$\r\n");
  expectAllZero(param);
}

TEST_F(CameraFile, NumberFollowedByTextIsItsLeadingNumber) {
  const FishEyeCalibrationParam param = load(
      "[CalibraionParam]\r\nu0=12.5 "
      "px\r\nv0=7;c\r\nfx=1,5\r\nfy=\"3.5\"\r\nk0=2.5e1z\r\np1=-1e-3e\r\n");
  EXPECT_EQ(param.u0, 12.5f);
  EXPECT_EQ(param.v0, 7.0f);
  EXPECT_EQ(param.fx, 1.0f);
  EXPECT_EQ(param.fy, 3.5f);
  EXPECT_EQ(param.k0, 25.0);
  EXPECT_EQ(param.p1, -0.001);
}

TEST_F(CameraFile, ValueIsCutTo127Characters) {
  // 126 digits and the point survive: what follows would change value and exponent.
  const std::string kept = "0." + std::string(124, '0') + "1";
  const std::string bytes = "[CalibraionParam]\r\np1=" + kept + "\r\np2=" + kept +
                            "e125\r\np3=" + "1" + std::string(127, '0') + "\r\np4=5\r\n";
  const FishEyeCalibrationParam param = load(bytes);
  EXPECT_EQ(param.p1, 1e-125);
  EXPECT_EQ(param.p2, 1e-125);
  EXPECT_EQ(param.p3, 1e126);
  EXPECT_EQ(param.p4, 5.0);
}

TEST_F(CameraFile, NumbersBeyondTheFieldsRangeAreInfinite) {
  const FishEyeCalibrationParam param =
      load("[CalibraionParam]\r\nu0=1e39\r\nk0=-1e39\r\np1=1e39\r\np2=-1e999\r\np3=1e-999\r\n");
  EXPECT_EQ(param.u0, std::numeric_limits<float>::infinity());
  EXPECT_EQ(param.k0, -std::numeric_limits<double>::infinity());
  EXPECT_EQ(param.p1, 1e39);
  EXPECT_EQ(param.p2, -std::numeric_limits<double>::infinity());
  EXPECT_EQ(param.p3, 0.0);
}

TEST_F(CameraFile, InfinitiesAndNanAreWords) {
  FishEyeCalibrationParam param = sampleParam();
  param.u0 = std::numeric_limits<float>::infinity();
  param.k0 = -std::numeric_limits<double>::infinity();
  param.p1 = std::copysign(std::numeric_limits<double>::quiet_NaN(), 1.0);
  param.p2 = std::copysign(std::numeric_limits<double>::quiet_NaN(), -1.0);
  const std::string bytes = saved(param);
  EXPECT_NE(bytes.find("u0=inf\r\n"), std::string::npos) << bytes;
  EXPECT_NE(bytes.find("k0=-inf\r\n"), std::string::npos) << bytes;
  EXPECT_NE(bytes.find("p1=nan\r\n"), std::string::npos) << bytes;
  EXPECT_NE(bytes.find("p2=-nan\r\n"), std::string::npos) << bytes;
  const FishEyeCalibrationParam loaded = load();
  EXPECT_EQ(loaded.u0, std::numeric_limits<float>::infinity());
  EXPECT_EQ(loaded.k0, -std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isnan(loaded.p1));
  EXPECT_TRUE(std::isnan(loaded.p2));
}

TEST_F(CameraFile, HugeNumbersAreWrittenInFullAndAffectNoOtherField) {
  FishEyeCalibrationParam param = sampleParam();
  param.p2 = -std::ldexp(1.0, 1023);  // -8.98...e307: 308 digits
  const std::string bytes = saved(param);
  const std::size_t begin = bytes.find("p2=") + 3;
  const std::string text = bytes.substr(begin, bytes.find('\r', begin) - begin);
  EXPECT_EQ(text.size(), 1u + 308u + 1u + 15u);
  EXPECT_EQ(text.substr(0, 18), "-89884656743115795");
  EXPECT_EQ(text.substr(text.size() - 21), "68608.000000000000000") << "every digit is exact";
  EXPECT_EQ(load().p3, 123.456);
}

// Systems differ in what they do to the ends of untouched lines.
std::vector<std::string> linesOf(const std::string& bytes) {
  std::vector<std::string> lines;
  std::istringstream stream(bytes);
  for (std::string line; std::getline(stream, line);) {
    if (line.ends_with('\r')) {
      line.pop_back();
    }
    lines.push_back(line);
  }
  return lines;
}

TEST_F(CameraFile, SaveOverAHandEditedFileKeepsEverythingElse) {
  writeBytes(path, "; hand edited\n[CalibraionParam]\nu0 = 5 \nImageDy=3\n[Other]\nq=1");
  const std::vector<std::string> fresh = linesOf(sampleBytes);
  ASSERT_EQ(fresh.size(), 41u);
  std::vector<std::string> expected{"; hand edited", "[CalibraionParam]", "u0=640.500000",
                                    "ImageDy=8.000000"};
  expected.insert(expected.end(), fresh.begin() + 2, fresh.end() - 1);  // v0 ... ImageDx
  expected.insert(expected.end(), {"[Other]", "q=1"});
  EXPECT_EQ(linesOf(saved(sampleParam())), expected);
}

#ifndef _WIN32
TEST_F(CameraFile, SaveOverAHandEditedFileKeepsUntouchedLinesByteForByte) {
  writeBytes(path, "; hand edited\n[CalibraionParam]\nu0 = 5 \nImageDy=3\n[Other]\nq=1");
  const std::string bytes = saved(sampleParam());
  EXPECT_EQ(bytes.substr(0, bytes.find("ImageDy")),
            "; hand edited\n[CalibraionParam]\nu0=640.500000\r\n");
  EXPECT_TRUE(bytes.ends_with("\r\nImageDx=-12.500000\r\n[Other]\nq=1")) << bytes;
}
#endif

TEST_F(CameraFile, SavingAgainRewritesInPlace) {
  saved(FishEyeCalibrationParam{});
  EXPECT_EQ(saved(sampleParam()), sampleBytes);
}

TEST_F(CameraFile, SaveIntoAMissingFolderIsTrueAndWritesNothing) {
  EXPECT_TRUE(SaveCalibrationParam(folder.file("missing/camera.ini").c_str(), sampleParam()));
  EXPECT_EQ(folder.entryCount(), 0);
}

TEST_F(CameraFile, SaveOntoAReadOnlyFileIsTrueAndWritesNothing) {
  writeBytes(path, "[CalibraionParam]\r\nu0=1\r\n");
  const support::ReadOnlyFile readOnly(path);
  if (!readOnly.isRespected()) GTEST_SKIP() << "This user may write to read-only files";
  EXPECT_EQ(saved(sampleParam()), "[CalibraionParam]\r\nu0=1\r\n");
  EXPECT_EQ(folder.entryCount(), 1);
}

TEST_F(CameraFile, SaveOntoAFolderIsTrueAndWritesNothing) {
  EXPECT_TRUE(SaveCalibrationParam(folder.path().string().c_str(), sampleParam()));
  EXPECT_EQ(folder.entryCount(), 0);
}

TEST_F(CameraFile, SaveToANullPathIsTrue) {
  EXPECT_TRUE(SaveCalibrationParam(nullptr, sampleParam()));
}

TEST_F(CameraFile, PathsOf259CharactersWork) {
  std::string longPath = path;
  longPath.insert(longPath.size() - 4, 259 - longPath.size(), 'n');
  ASSERT_EQ(longPath.size(), 259u);  // 260 with the terminating NUL
  EXPECT_TRUE(SaveCalibrationParam(longPath.c_str(), sampleParam()));
  EXPECT_EQ(bytesOf(longPath), sampleBytes);
  FishEyeCalibrationParam param{};
  EXPECT_TRUE(LoadCalibrationParam(longPath.c_str(), param));
  EXPECT_EQ(param.u0, 640.5f);
}

}  // namespace
