// The C functions map many points as the C++ functions map one.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "c_api/records.h"
#include "support/dice.h"

using namespace c_api_tests;

namespace {

using Numbers = std::vector<float>;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

FishEyeCalibrationParam randomRecord(support::Dice& dice) {
  FishEyeCalibrationParam param{};
  param.fx = static_cast<float>(dice.uniform(200, 900));
  param.fy = static_cast<float>(dice.uniform(200, 900));
  param.u0 = static_cast<float>(dice.uniform(300, 700));
  param.v0 = static_cast<float>(dice.uniform(200, 500));
  param.skewness = dice.oneIn(2) ? 0.003F : 0;
  param.k0 = dice.number(0.03);
  param.k1 = dice.number(0.03);
  param.Rx = dice.numberF(0.5);
  param.Ry = dice.numberF(0.5);
  param.Rz = dice.numberF(3);
  param.Tx = dice.numberF(100);
  param.Ty = dice.numberF(100);
  param.Tz = static_cast<float>(dice.uniform(200, 600));
  param.Pixel = static_cast<float>(dice.uniform(0.1, 2));
  param.DatumPtXw = dice.numberF(300);
  param.DatumPtYw = dice.numberF(300);
  return param;
}

Numbers randomNumbers(support::Dice& dice, std::size_t count, double reach) {
  Numbers numbers(count);
  for (float& number : numbers) {
    number = dice.oneIn(40) ? (dice.oneIn(2) ? kNan : HUGE_VALF) : dice.numberF(reach);
  }
  return numbers;
}

bool sameBits(const Numbers& a, const Numbers& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

// Both interfaces on 17 random points of `width` numbers.
using OnePoint = std::function<void(const FishEyeCalibrationParam&, const float*, float&, float&)>;
using ManyPoints = std::function<fcal_status(const fcal_camera&, const float*, int32_t, float*)>;

void expectSame(std::size_t width, const OnePoint& one, const ManyPoints& many) {
  constexpr std::size_t kCount = 17;
  support::Dice dice(31);
  for (int run = 0; run < 100; ++run) {
    const FishEyeCalibrationParam param = run == 0 ? FishEyeCalibrationParam{} : randomRecord(dice);
    const Numbers in = randomNumbers(dice, kCount * width, 500);
    Numbers expected(2 * kCount, -1);
    for (std::size_t i = 0; i < kCount; ++i) {
      one(param, in.data() + width * i, expected[2 * i], expected[2 * i + 1]);
    }
    Numbers out(2 * kCount + 1, -1);
    ASSERT_TRUE(succeeds(many(cameraOf(param), in.data(), kCount, out.data())));
    EXPECT_EQ(out.back(), -1);  // nothing behind the last point
    out.pop_back();
    ASSERT_TRUE(sameBits(out, expected)) << run;
  }
  EXPECT_TRUE(succeeds(many(fcal_camera{}, nullptr, 0, nullptr)));
}

TEST(CPointMapping, WorldToRawIsTheCxxFunction) {
  expectSame(
      3,
      [](const auto& param, const float* p, float& x, float& y) {
        WorldToRawImagePoint(p[0], p[1], p[2], param, x, y);
      },
      [](const fcal_camera& camera, const float* in, int32_t count, float* out) {
        return fcal_world_to_raw(&camera, in, count, out);
      });
}

TEST(CPointMapping, WorldToCorrectedIsTheCxxFunction) {
  expectSame(
      3,
      [](const auto& param, const float* p, float& x, float& y) {
        WorldToCorrectedImagePoint(p[0], p[1], p[2], param, 319.5F, 240, x, y);
      },
      [](const fcal_camera& camera, const float* in, int32_t count, float* out) {
        return fcal_world_to_corrected(&camera, 319.5F, 240, in, count, out);
      });
}

TEST(CPointMapping, WorldToViewIsTheCxxFunction) {
  expectSame(
      2,
      [](const auto& param, const float* p, float& x, float& y) {
        WorldToSecondCorrectedImagePoint(p[0], p[1], 5, param, 319.5F, 240, x, y);
      },
      [](const fcal_camera& camera, const float* in, int32_t count, float* out) {
        return fcal_world_to_view(&camera, 319.5F, 240, in, count, out);
      });
}

TEST(CPointMapping, ViewToWorldIsTheCxxFunction) {
  expectSame(
      2,
      [](const auto& param, const float* p, float& x, float& y) {
        float unused = 0;
        CorrectedImageToWorldPoint(p[0], p[1], 319.5F, 240, param, x, y, unused);
      },
      [](const fcal_camera& camera, const float* in, int32_t count, float* out) {
        return fcal_view_to_world(&camera, 319.5F, 240, in, count, out);
      });
}

TEST(CPointMapping, StitchedPointsAreThoseOfTheCxxFunctions) {
  support::Dice dice(32);
  for (int run = 0; run < 100; ++run) {
    const DualFishEyeCalibrationParam dual{
        dice.numberF(2), 400, 300, dice.whole(-99, 999), dice.whole(-99, 999), dice.numberF(9),
        dice.numberF(9)};
    const fcal_dual record = sameBytes<fcal_dual>(dual);
    const Numbers in = randomNumbers(dice, 20, 500);
    Numbers toStitched(20), toWorld(20), out(20);
    for (std::size_t i = 0; i < in.size(); i += 2) {
      float unused = 0;
      DualCam_WorldToSecondCorrectedImagePoint(in[i], in[i + 1], 3, dual, toStitched[i],
                                               toStitched[i + 1]);
      DualCam_CorrectedImageToWorldPoint(in[i], in[i + 1], dual, toWorld[i], toWorld[i + 1],
                                         unused);
    }
    ASSERT_TRUE(succeeds(fcal_world_to_stitched(&record, in.data(), 10, out.data())));
    ASSERT_TRUE(sameBits(out, toStitched));
    ASSERT_TRUE(succeeds(fcal_stitched_to_world(&record, in.data(), 10, out.data())));
    ASSERT_TRUE(sameBits(out, toWorld));
  }
}

TEST(CPointMapping, RawToWorldInvertsWorldToRaw) {
  support::Dice dice(33);
  for (int run = 0; run < 200; ++run) {
    const fcal_camera camera = cameraOf(randomRecord(dice));
    const float world[] = {dice.numberF(100), dice.numberF(100), 0};
    float raw[2];
    float back[2];
    ASSERT_TRUE(succeeds(fcal_world_to_raw(&camera, world, 1, raw)));
    ASSERT_TRUE(succeeds(fcal_raw_to_world(&camera, raw, 1, back)));
    EXPECT_NEAR(back[0], world[0], 1e-3) << run;
    EXPECT_NEAR(back[1], world[1], 1e-3) << run;
  }
}

TEST(CPointMapping, RawToCorrectedLeadsFromOneImageOfAPointToTheOther) {
  support::Dice dice(34);
  for (int run = 0; run < 200; ++run) {
    FishEyeCalibrationParam param = randomRecord(dice);
    const fcal_camera camera = cameraOf(param);
    const float world[] = {dice.numberF(100), dice.numberF(100), dice.numberF(20)};
    float raw[2];
    float corrected[2];
    float expected[2];
    ASSERT_TRUE(succeeds(fcal_world_to_raw(&camera, world, 1, raw)));
    ASSERT_TRUE(succeeds(fcal_raw_to_corrected(&camera, 320, 240, raw, 1, corrected)));
    ASSERT_TRUE(succeeds(fcal_world_to_corrected(&camera, 320, 240, world, 1, expected)));
    EXPECT_NEAR(corrected[0], expected[0], 1e-2) << run;
    EXPECT_NEAR(corrected[1], expected[1], 1e-2) << run;
  }
}

TEST(CPointMapping, PixelsBeyondTheLensShowNothing) {
  fcal_camera camera{};
  camera.fx = camera.fy = 100;  // 90 degrees lie 157 pixels from the centre
  camera.tz = 1;
  const float raw[] = {0, 0, 200, 0, 150, 0, kNan, 0};
  float out[8];
  ASSERT_TRUE(succeeds(fcal_raw_to_world(&camera, raw, 4, out)));
  EXPECT_EQ(out[0], 0);
  EXPECT_EQ(out[1], 0);
  EXPECT_TRUE(std::isnan(out[2]) && std::isnan(out[3]));
  EXPECT_NEAR(out[4], std::tan(1.5), 1e-4);
  EXPECT_TRUE(std::isnan(out[6]) && std::isnan(out[7]));
  ASSERT_TRUE(succeeds(fcal_raw_to_corrected(&camera, 50, 60, raw, 4, out)));
  EXPECT_EQ(out[0], 50);
  EXPECT_EQ(out[1], 60);
  EXPECT_TRUE(std::isnan(out[2]) && std::isnan(out[3]));
  EXPECT_NEAR(out[4], 50 + 100 * std::tan(1.5), 1e-2);
  EXPECT_TRUE(std::isnan(out[6]) && std::isnan(out[7]));
}

TEST(CPointMapping, PixelsAboveTheHorizonShowNoBed) {
  fcal_camera camera{};
  camera.fx = camera.fy = 100;
  camera.rx = -1.2F;  // from the bed's normal
  camera.tz = 1;
  const float raw[] = {0, 100, 0, -100};
  float out[4];
  ASSERT_TRUE(succeeds(fcal_raw_to_world(&camera, raw, 2, out)));
  EXPECT_NE(std::isnan(out[1]), std::isnan(out[3]));
}

}  // namespace
