// Pictures that are none are refused by every function that takes one, with nothing written.
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>

#include "c_api/host_pictures.h"
#include "c_api/records.h"
#include "support/shown_message.h"

using namespace c_api_tests;

namespace {

constexpr int kWidth = 8;
constexpr int kHeight = 4;

struct BadPicture {
  std::string text;
  std::function<void(fcal_image&)> spoil;
};

std::vector<BadPicture> badPictures() {
  return {
      {"data is null", [](fcal_image& image) { image.data = nullptr; }},
      {"width or height is not positive", [](fcal_image& image) { image.width = 0; }},
      {"width or height is not positive", [](fcal_image& image) { image.height = 0; }},
      {"width or height is not positive", [](fcal_image& image) { image.width = INT_MIN; }},
      {"width or height is not positive", [](fcal_image& image) { image.height = -1; }},
      {"bits is not 8, 24 or 32", [](fcal_image& image) { image.bits = 0; }},
      {"bits is not 8, 24 or 32", [](fcal_image& image) { image.bits = 16; }},
      {"bits is not 8, 24 or 32", [](fcal_image& image) { image.bits = INT_MAX; }},
      {"bits is not 8, 24 or 32", [](fcal_image& image) { image.bits = -8; }},
      {"stride is shorter than a row", [](fcal_image& image) { image.stride = 7; }},
      {"stride is shorter than a row", [](fcal_image& image) { image.stride = -7; }},
      {"more than 2^31 - 1 bytes", [](fcal_image& image) { image.stride = INT_MAX; }},
      {"more than 2^31 - 1 bytes", [](fcal_image& image) { image.stride = INT_MIN; }},
      {"more than 2^31 - 1 bytes",
       [](fcal_image& image) {
         image.width = image.height = INT_MAX;
         image.stride = 0;
       }},
      {"more than 2^31 - 1 bytes",  // the product of row and height exceeds 2^63
       [](fcal_image& image) {
         image.width = image.height = INT_MAX;
         image.stride = 0;
         image.bits = 32;
       }},
      {"more than 2^31 - 1 bytes",
       [](fcal_image& image) {
         image.width = 1600000000;
         image.height = 1500000000;
         image.stride = 0;
         image.bits = 24;
       }},
      {"more than 2^31 - 1 bytes",
       [](fcal_image& image) {
         image.height = 1 << 28;  // one byte too many
         image.stride = 0;
       }},
  };
}

// Calls `use` with each bad picture; it must refuse it by `name` and leave `outputs` alone.
void expectRefused(const std::string& name, const std::function<fcal_status(fcal_image*)>& use,
                   const std::vector<const HostPicture*>& outputs) {
  for (const BadPicture& bad : badPictures()) {
    HostPicture good(kWidth, kHeight, 8, kRowLayouts[2]);
    bad.spoil(*good.image());
    EXPECT_TRUE(refuses(use(good.image()), name + ": " + bad.text));
    for (const HostPicture* output : outputs) {
      EXPECT_EQ(output->content(), Bytes(kWidth * kHeight, 0xA5));
    }
  }
  EXPECT_TRUE(refuses(use(nullptr), name + ": null"));
}

class CBadPictures : public testing::Test {
 protected:
  HostPicture frame_{kWidth, kHeight, 8, kRowLayouts[0], 9};
  HostPicture view_{kWidth, kHeight, 8, kRowLayouts[0]};
  HostPicture mask_{kWidth, kHeight, 8, kRowLayouts[0]};
  fcal_camera camera_{};
  fcal_dual dual_{};
};

TEST_F(CBadPictures, AreRefusedByCorrect) {
  expectRefused(
      "frame",
      [&](fcal_image* bad) { return fcal_correct(bad, &camera_, view_.image(), mask_.image()); },
      {&view_, &mask_});
  expectRefused(
      "view",
      [&](fcal_image* bad) { return fcal_correct(frame_.image(), &camera_, bad, mask_.image()); },
      {&mask_});
  for (const BadPicture& bad : badPictures()) {
    HostPicture mask(kWidth, kHeight, 8, kRowLayouts[2]);
    bad.spoil(*mask.image());
    EXPECT_TRUE(refuses(fcal_correct(frame_.image(), &camera_, view_.image(), mask.image()),
                        "mask: " + bad.text));
  }
}

TEST_F(CBadPictures, AreRefusedByCrop) {
  expectRefused("source", [&](fcal_image* bad) { return fcal_crop(bad, view_.image()); }, {&view_});
  expectRefused("target", [&](fcal_image* bad) { return fcal_crop(frame_.image(), bad); }, {});
}

TEST_F(CBadPictures, AreRefusedByCropStitched) {
  expectRefused(
      "source",
      [&](fcal_image* bad) { return fcal_crop_stitched(bad, 0, 0, view_.image(), &dual_); },
      {&view_});
  expectRefused(
      "target",
      [&](fcal_image* bad) { return fcal_crop_stitched(frame_.image(), 0, 0, bad, &dual_); }, {});
  EXPECT_TRUE(equalBytes(dual_, fcal_dual{}));
}

TEST_F(CBadPictures, AreRefusedByStitch) {
  const fcal_rig_view good{*frame_.image(), &camera_, nullptr, 0};
  for (const BadPicture& bad : badPictures()) {
    HostPicture frame(kWidth, kHeight, 8, kRowLayouts[2]);
    bad.spoil(*frame.image());
    const fcal_rig_view view{*frame.image(), &camera_, nullptr, 0};
    EXPECT_TRUE(
        refuses(fcal_stitch(&view, &good, view_.image(), &dual_), "first.frame: " + bad.text));
    EXPECT_TRUE(
        refuses(fcal_stitch(&good, &view, view_.image(), &dual_), "second.frame: " + bad.text));
    if (frame.image()->data != nullptr) {
      int32_t width = 0;
      int32_t height = 0;
      EXPECT_TRUE(
          refuses(fcal_stitched_size(&view, &good, &width, &height), "first.frame: " + bad.text));
      EXPECT_TRUE(
          refuses(fcal_stitched_size(&good, &view, &width, &height), "second.frame: " + bad.text));
    }
  }
  expectRefused("canvas", [&](fcal_image* bad) { return fcal_stitch(&good, &good, bad, &dual_); },
                {});
}

TEST_F(CBadPictures, TheBitsOfTwoPicturesMustAgree) {
  HostPicture colour(kWidth, kHeight, 24, kRowLayouts[0]);
  EXPECT_TRUE(refuses(fcal_correct(frame_.image(), &camera_, colour.image(), nullptr),
                      "view: bits differ from those of frame"));
  EXPECT_TRUE(refuses(fcal_crop(frame_.image(), colour.image()),
                      "target: bits differ from those of source"));
  EXPECT_TRUE(refuses(fcal_crop_stitched(frame_.image(), 0, 0, colour.image(), &dual_),
                      "target: bits differ from those of source"));
  const fcal_rig_view grey{*frame_.image(), &camera_, nullptr, 0};
  const fcal_rig_view coloured{*colour.image(), &camera_, nullptr, 0};
  EXPECT_TRUE(refuses(fcal_stitch(&coloured, &grey, frame_.image(), &dual_),
                      "first.frame: bits differ from those of canvas"));
  EXPECT_TRUE(refuses(fcal_stitch(&grey, &coloured, frame_.image(), &dual_),
                      "second.frame: bits differ from those of canvas"));
}

TEST_F(CBadPictures, AMaskHasTheSizeOfTheView) {
  for (const auto& [width, height, bits] : {std::array{7, 4, 8}, {8, 5, 8}, {8, 4, 24}}) {
    HostPicture mask(width, height, bits, kRowLayouts[0]);
    EXPECT_TRUE(refuses(fcal_correct(frame_.image(), &camera_, view_.image(), mask.image()),
                        "mask: not 8 bits or not the size of view"));
  }
}

TEST_F(CBadPictures, ACroppedSizeIsAMultipleOfFourAndNoMessageSaysSo) {
  HostPicture target(6, 4, 8, kRowLayouts[0]);
  fcal_status status = FCAL_OK;
  EXPECT_EQ(support::messageShownBy(
                [&] { status = fcal_crop_stitched(frame_.image(), 0, 0, target.image(), &dual_); }),
            "");
  EXPECT_TRUE(refuses(status, "target: width or height is not a multiple of 4"));
  EXPECT_EQ(dual_.width, 0);
}

}  // namespace
