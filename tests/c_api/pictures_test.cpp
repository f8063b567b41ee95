// The C functions on pictures give the bytes of the C++ functions, whatever the rows' layout.
#include <gtest/gtest.h>

#include "c_api/host_pictures.h"
#include "c_api/records.h"
#include "stitching/rigs.h"
#include "support/dice.h"

using namespace c_api_tests;

namespace {

constexpr int kAllBits[] = {8, 24, 32};

int layoutCount() { return static_cast<int>(kRowLayouts.size()); }

const RowLayout& someLayout(support::Dice& dice) {
  return kRowLayouts[static_cast<std::size_t>(dice.whole(0, layoutCount() - 1))];
}

struct Corrected {
  bool result;
  Bytes view;
  Bytes mask;
};

std::size_t bytesOf(int width, int height, int bits) {
  return static_cast<std::size_t>(width * height * (bits / 8));
}

Corrected correctedByCxx(plain::StitchCamera frame, int width, int height) {
  Corrected corrected{false, Bytes(bytesOf(width, height, frame.bits), 7),
                      Bytes(bytesOf(width, height, 8), 9)};
  corrected.result =
      SingleCamCorrected(frame.image.data(), frame.width, frame.height, frame.bits, frame.param,
                         corrected.view.data(), width, height, corrected.mask.data());
  return corrected;
}

TEST(CCorrected, EveryRowLayoutGivesTheBytesOfTheCxxFunction) {
  support::Dice dice(11);
  int shown = 0;
  for (int run = 0; run < 400; ++run) {
    const plain::StitchCamera frame = rigs::randomRig(dice, kAllBits[run % 3]).first;
    const int width = dice.whole(1, 100);
    const int height = dice.whole(1, 40);
    const Corrected expected = correctedByCxx(frame, width, height);
    HostPicture source(frame.width, frame.height, frame.bits, someLayout(dice));
    HostPicture view(width, height, frame.bits, someLayout(dice), 7);
    HostPicture mask(width, height, 8, someLayout(dice), 9);
    source.fill(frame.image);
    const bool masked = run % 4 != 0;
    const fcal_camera camera = cameraOf(frame.param);
    const fcal_status status =
        fcal_correct(source.image(), &camera, view.image(), masked ? mask.image() : nullptr);
    ASSERT_EQ(status, expected.result ? FCAL_OK : FCAL_FALSE) << run << fcal_last_error();
    ASSERT_EQ(view.content(), expected.view) << run;
    ASSERT_EQ(mask.content(), masked ? expected.mask : Bytes(expected.mask.size(), 9)) << run;
    ASSERT_TRUE(source.isGuardIntact() && view.isGuardIntact() && mask.isGuardIntact()) << run;
    ASSERT_EQ(source.content(), frame.image) << run;
    shown += expected.result ? 1 : 0;
  }
  EXPECT_GT(shown, 300);
}

TEST(CCorrected, LargePicturesAgreeInEveryPairOfLayouts) {
  support::Dice dice(12);
  for (const int bits : kAllBits) {
    plain::StitchCamera frame = rigs::flatCamera(331, 217, bits, 0);
    for (unsigned char& byte : frame.image) {
      byte = static_cast<unsigned char>(dice.whole(0, 255));
    }
    frame.param.fx = frame.param.fy = 120;
    frame.param.k0 = 0.02;
    const Corrected expected = correctedByCxx(frame, 301, 203);
    ASSERT_TRUE(expected.result);
    for (const RowLayout& from : kRowLayouts) {
      for (const RowLayout& to : kRowLayouts) {
        HostPicture source(331, 217, bits, from);
        HostPicture view(301, 203, bits, to);
        HostPicture mask(301, 203, 8, from);
        source.fill(frame.image);
        const fcal_camera camera = cameraOf(frame.param);
        ASSERT_TRUE(succeeds(fcal_correct(source.image(), &camera, view.image(), mask.image())));
        ASSERT_EQ(view.content(), expected.view);
        ASSERT_EQ(mask.content(), expected.mask);
        ASSERT_TRUE(view.isGuardIntact() && mask.isGuardIntact());
      }
    }
  }
}

TEST(CCorrected, TheViewMayOverwriteTheFrame) {
  support::Dice dice(13);
  for (int run = 0; run < 60; ++run) {
    const plain::StitchCamera frame = rigs::randomRig(dice, kAllBits[run % 3]).first;
    const Corrected expected = correctedByCxx(frame, frame.width, frame.height);
    HostPicture picture(frame.width, frame.height, frame.bits, someLayout(dice));
    picture.fill(frame.image);
    const fcal_camera camera = cameraOf(frame.param);
    const fcal_status status = fcal_correct(picture.image(), &camera, picture.image(), nullptr);
    ASSERT_EQ(status, expected.result ? FCAL_OK : FCAL_FALSE);
    ASSERT_EQ(picture.content(), expected.result ? expected.view : frame.image);
    ASSERT_TRUE(picture.isGuardIntact());
  }
}

TEST(CCorrected, ABlackFrameHasNoResult) {
  const plain::StitchCamera frame = rigs::flatCamera(20, 10, 24, 0);
  for (const RowLayout& layout : kRowLayouts) {
    HostPicture source(20, 10, 24, layout);
    HostPicture view(20, 10, 24, layout);
    source.fill(frame.image);
    const Bytes before = view.content();
    const fcal_camera camera = cameraOf(frame.param);
    EXPECT_TRUE(fails(fcal_correct(source.image(), &camera, view.image(), nullptr), FCAL_FALSE,
                      "frame: entirely black without its distortion"));
    EXPECT_EQ(view.content(), before);
  }
}

TEST(CCropping, EveryRowLayoutGivesTheBytesOfTheCxxFunction) {
  support::Dice dice(14);
  for (int run = 0; run < 300; ++run) {
    plain::StitchCamera frame = rigs::randomRig(dice, kAllBits[run % 3]).first;
    const int width = dice.whole(1, 50);
    const int height = dice.whole(1, 40);
    Bytes expected(bytesOf(width, height, frame.bits), 7);
    CroppingImage(frame.image.data(), frame.width, frame.height, frame.bits, expected.data(), width,
                  height);
    HostPicture source(frame.width, frame.height, frame.bits, someLayout(dice));
    HostPicture target(width, height, frame.bits, someLayout(dice), 7);
    source.fill(frame.image);
    ASSERT_TRUE(succeeds(fcal_crop(source.image(), target.image())));
    ASSERT_EQ(target.content(), expected) << run;
    ASSERT_TRUE(target.isGuardIntact());
  }
}

TEST(CStitchedCropping, EveryRowLayoutGivesTheBytesAndTheRecordOfTheCxxFunction) {
  support::Dice dice(15);
  for (int run = 0; run < 300; ++run) {
    plain::StitchCamera frame = rigs::randomRig(dice, kAllBits[run % 3]).first;
    const int width = 4 * dice.whole(1, 12);
    const int height = 4 * dice.whole(1, 10);
    const int left = dice.whole(-20, 40);
    const int top = run % 50 == 0 ? INT32_MIN : dice.whole(-20, 40);
    DualFishEyeCalibrationParam dual{0.5F, 40, 30, dice.whole(-9, 99), dice.whole(-9, 99), 1, 2};
    fcal_dual record = sameBytes<fcal_dual>(dual);
    Bytes expected(bytesOf(width, height, frame.bits), 7);
    DualCam_CroppingImage(frame.image.data(), frame.width, frame.height, frame.bits, left, top,
                          dual, expected.data(), width, height);
    HostPicture source(frame.width, frame.height, frame.bits, someLayout(dice));
    HostPicture target(width, height, frame.bits, someLayout(dice), 7);
    source.fill(frame.image);
    ASSERT_TRUE(succeeds(fcal_crop_stitched(source.image(), left, top, target.image(), &record)));
    ASSERT_EQ(target.content(), expected) << run;
    ASSERT_TRUE(equalBytes(record, dual));
    ASSERT_TRUE(target.isGuardIntact());
  }
}

}  // namespace
