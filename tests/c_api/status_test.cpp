// Status, error text and version.
#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <string>
#include <thread>

#include "c_api/records.h"
#include "c_api/status.h"

using namespace c_api_tests;
namespace c_api = fisheye_calibration::c_api;

namespace {

template <class Exception>
fcal_status statusOf(const Exception& exception) {
  return c_api::guarded([&]() -> fcal_status { throw exception; });
}

TEST(CStatus, ValuesNeverChange) {
  EXPECT_EQ(FCAL_OK, 0);
  EXPECT_EQ(FCAL_FALSE, 1);
  EXPECT_EQ(FCAL_BAD_ARGUMENT, 2);
  EXPECT_EQ(FCAL_NO_MEMORY, 3);
  EXPECT_EQ(FCAL_IMAGE_LIBRARY, 4);
  EXPECT_EQ(FCAL_OTHER, 5);
  EXPECT_EQ(FCAL_NOISE_SMOOTH, 0);
  EXPECT_EQ(FCAL_NOISE_WHITE, 1);
  EXPECT_EQ(FCAL_SOLVED, 0);
  EXPECT_EQ(FCAL_BAD_INPUT, 1);
  EXPECT_EQ(FCAL_TOO_FEW_POINTS, 2);
  EXPECT_EQ(FCAL_DEGENERATE, 3);
  EXPECT_EQ(FCAL_NOT_CONVERGED, 4);
  EXPECT_EQ(FCAL_BEHIND_CAMERA, 5);
  EXPECT_EQ(FCAL_FOLDED_LENS, 6);
  EXPECT_EQ(FCAL_TOO_MANY_WRONG_POINTS, 7);
  EXPECT_EQ(FCAL_TOO_MANY_WRONG_VIEWS, 8);
  EXPECT_EQ(sizeof(fcal_status), 4U);
}

TEST(CStatus, EveryStatusHasAText) {
  EXPECT_STREQ(fcal_status_text(FCAL_OK), "success");
  EXPECT_STREQ(fcal_status_text(FCAL_FALSE), "no result");
  EXPECT_STREQ(fcal_status_text(FCAL_BAD_ARGUMENT), "bad argument");
  EXPECT_STREQ(fcal_status_text(FCAL_NO_MEMORY), "out of memory");
  EXPECT_STREQ(fcal_status_text(FCAL_IMAGE_LIBRARY), "refused by the image library");
  EXPECT_STREQ(fcal_status_text(FCAL_OTHER), "unexpected failure");
  EXPECT_STREQ(fcal_status_text(6), "unknown status");
  EXPECT_STREQ(fcal_status_text(-1), "unknown status");
}

TEST(CStatus, TheVersionIsThatOfTheProject) {
  EXPECT_STREQ(fcal_version(), FISHEYE_CALIBRATION_VERSION);
}

TEST(CStatus, EveryExceptionBecomesAStatusAndAText) {
  const std::string memory = "memory: too little, or an image of more than 2^31 - 1 bytes";
  EXPECT_TRUE(fails(statusOf(std::bad_alloc()), FCAL_NO_MEMORY, memory));
  EXPECT_TRUE(fails(statusOf(std::length_error("vector")), FCAL_NO_MEMORY, memory));
  EXPECT_TRUE(fails(statusOf(cv::Exception(cv::Error::StsNoMem, "none", "alloc", "file", 1)),
                    FCAL_NO_MEMORY, memory));
  EXPECT_TRUE(fails(statusOf(cv::Exception(cv::Error::StsAssert, "x > 0", "solve", "file", 1)),
                    FCAL_IMAGE_LIBRARY, "solve: x > 0"));
  EXPECT_TRUE(fails(statusOf(std::runtime_error("what")), FCAL_OTHER, "unexpected: what"));
  EXPECT_TRUE(fails(statusOf(5), FCAL_OTHER, "unexpected: an exception of unknown type"));
}

TEST(CStatus, ALongTextIsCut) {
  EXPECT_EQ(statusOf(std::runtime_error(std::string(10000, 'x'))), FCAL_OTHER);
  EXPECT_EQ(std::strlen(fcal_last_error()), 511U);
  EXPECT_EQ(statusOf(cv::Exception(0, "err", std::string(600, 'f'), "file", 1)),
            FCAL_IMAGE_LIBRARY);
  EXPECT_EQ(std::strlen(fcal_last_error()), 511U);
}

TEST(CLastError, IsEmptyAfterASuccess) {
  EXPECT_TRUE(refuses(fcal_straighten(nullptr, 1), "points: null"));
  fcal_version();
  fcal_status_text(FCAL_OK);
  EXPECT_STREQ(fcal_last_error(), "points: null");
  const fcal_camera camera{};
  fcal_solution solution;
  EXPECT_EQ(fcal_solution_of_camera(&camera, &solution), FCAL_OK);
  EXPECT_STREQ(fcal_last_error(), "");
}

TEST(CLastError, BelongsToItsThread) {
  EXPECT_TRUE(refuses(fcal_straighten(nullptr, 1), "points: null"));
  std::string first;
  std::string second;
  std::thread([&] {
    first = fcal_last_error();
    fcal_straighten(nullptr, -1);
    second = fcal_last_error();
  }).join();
  EXPECT_EQ(first, "");
  EXPECT_EQ(second, "points: count is negative");
  EXPECT_STREQ(fcal_last_error(), "points: null");
}

}  // namespace
