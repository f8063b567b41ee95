// For tests of measured views: skips, saying so, where the folder is absent.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/measured_views.h"

namespace support {

class MeasuredViewsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* set : {"garage", "office_mono", "office_stereo"}) {
      if (readMeasuredSet(set).empty()) {
        GTEST_SKIP() << "no measured views in '" << measuredViewsFolder() << "/" << set
                     << "'; set FISHEYE_CALIBRATION_REALDATA to their folder";
      }
    }
  }
};

}  // namespace support
