// Parameter files look the same and are read the same in a process whose locale has a decimal
// comma.
#include <gtest/gtest.h>

#include <locale>

#include "fisheye_calibration.h"
#include "support/comma_locale.h"
#include "support/temporary_folder.h"

namespace {

class Commas : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

class ParameterFileLocale : public testing::Test {
 protected:
  void TearDown() override { std::locale::global(std::locale::classic()); }

  void expectPointsInFiles() const {
    FishEyeCalibrationParam param{};
    param.fx = 1234567.25f;
    param.p1 = -1234.5;
    EXPECT_TRUE(SaveCalibrationParam(path.c_str(), param));
    const std::string bytes = support::bytesOf(path);
    EXPECT_NE(bytes.find("\r\nfx=1234567.250000\r\n"), std::string::npos) << bytes;
    EXPECT_NE(bytes.find("\r\np1=-1234.500000000000000\r\n"), std::string::npos) << bytes;
    EXPECT_EQ(bytes.find(','), std::string::npos);
    FishEyeCalibrationParam loaded{};
    EXPECT_TRUE(LoadCalibrationParam(path.c_str(), loaded));
    EXPECT_EQ(loaded.fx, 1234567.25f);
    EXPECT_EQ(loaded.p1, -1234.5);

    DualFishEyeCalibrationParam dual{};
    dual.Pixel = 0.5f;
    dual.StdImageWidth = 1234567;
    EXPECT_TRUE(SaveDualCamerasCalibrationParam(path.c_str(), dual));
    EXPECT_NE(support::bytesOf(path).find("Pixel=0.500000\r\nStdImageWidth=1234567\r\n"),
              std::string::npos);
    DualFishEyeCalibrationParam loadedDual{};
    EXPECT_TRUE(LoadDualCamerasCalibrationParam(path.c_str(), loadedDual));
    EXPECT_EQ(loadedDual.Pixel, 0.5f);
    EXPECT_EQ(loadedDual.StdImageWidth, 1234567);
  }

  support::TemporaryFolder folder;
  const std::string path = folder.file("camera.ini");
};

TEST_F(ParameterFileLocale, GlobalCxxLocaleWithCommasDoesNotMatter) {
  std::locale::global(std::locale(std::locale::classic(), new Commas));
  expectPointsInFiles();
}

TEST_F(ParameterFileLocale, CLocaleWithCommasDoesNotMatter) {
  const support::CommaLocale locale;
  SKIP_WITHOUT_COMMA_LOCALE(locale);
  expectPointsInFiles();
}

}  // namespace
