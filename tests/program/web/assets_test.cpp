#include "web/assets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace fisheye_calibration::program {
namespace {

using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

TEST(WebAssets, AreTheFilesThemselves) {
  const std::string theme(webAsset("theme.css"));
  EXPECT_THAT(theme, StartsWith("/* The look of every page"));
  EXPECT_THAT(theme, EndsWith("}\n"));
  EXPECT_THAT(std::string(webAsset("no such file")), IsEmpty());
}

}  // namespace
}  // namespace fisheye_calibration::program
