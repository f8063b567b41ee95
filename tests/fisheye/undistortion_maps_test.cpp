#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "fisheye/fisheye.h"
#include "support/plain_correction.h"
#include "support/plain_model.h"
#include "support/raises.h"
#include "support/synthetic_rig.h"

using namespace fisheye_calibration;

namespace {

const cv::Matx33d kK(400, 0, 100.25, 0, 400, 80.5, 0, 0, 1);
const cv::Vec2d kD(0.1, -0.05);
const cv::Vec2d kNoDistortion(0, 0);
const cv::Matx33d kP(200, 0, 0, 0, 200, 0, 0, 0, 1);
const cv::Size kSize(640, 480);  // its centre is pixel (320, 240)

struct Maps {
  cv::Mat whole;
  cv::Mat index;

  std::string bytes() const { return support::bytesOf(whole) + support::bytesOf(index); }
};

Maps mapsOf(cv::InputArray K, cv::InputArray D, cv::InputArray R, cv::InputArray P,
            const cv::Size& size) {
  Maps maps;
  fisheye::initUndistortRectifyMap(K, D, R, P, size, CV_16SC2, maps.whole, maps.index);
  return maps;
}

// Map entry: whole pixels and 1/32 pixels, column before row.
using Entry = cv::Vec4i;

Entry entryAt(const Maps& maps, int column, int row) {
  const cv::Vec2s whole = maps.whole.at<cv::Vec2s>(row, column);
  const int index = maps.index.at<ushort>(row, column);
  return {whole[0], whole[1], index % 32, index / 32};
}

const Entry kTopLeft(0, 0, 0, 0);

// The map's entry for the raw position in column `u` and row 0.
Entry entryOfColumn(double u) {
  const cv::Matx33d K(400, 0, u, 0, 400, 0, 0, 0, 1);
  return entryAt(mapsOf(K, kNoDistortion, cv::noArray(), kP, cv::Size(4, 4)), 2, 2);
}

TEST(UndistortionMaps, CentreShowsThePrincipalPoint) {
  EXPECT_EQ(entryAt(mapsOf(kK, kD, cv::noArray(), kP, kSize), 320, 240), Entry(100, 80, 8, 16));
}

// A ray at 45 degrees: theta_d = pi/4 + 0.1 (pi/4)^2 - 0.05 (pi/4)^3 = 0.82286, times 400.
TEST(UndistortionMaps, PixelsAreDisplacedByTheDistortedAngle) {
  const Maps maps = mapsOf(kK, kD, cv::noArray(), kP, kSize);
  EXPECT_EQ(entryAt(maps, 520, 240), Entry(429, 80, 13, 16));  // u = 429.3938
  EXPECT_EQ(entryAt(maps, 320, 440), Entry(100, 409, 8, 21));  // v = 409.6438
  // r = sqrt(1/2): u = 281.7512, v = -101.0012, the nearest 1/32 to which is -101 + 0/32
  EXPECT_EQ(entryAt(maps, 420, 140), Entry(281, -101, 24, 0));
}

TEST(UndistortionMaps, CentreOfAnOddSizeIsRoundedUp) {
  const Maps maps = mapsOf(kK, kD, cv::noArray(), kP, cv::Size(641, 481));
  EXPECT_EQ(entryAt(maps, 321, 241), Entry(100, 80, 8, 16));
}

TEST(UndistortionMaps, PrincipalPointOfTheNewCameraIsNotRead) {
  const cv::Matx33d moved(200, 0, 77, 0, 200, -1e9, 0, 0, 1);
  EXPECT_EQ(mapsOf(kK, kD, cv::noArray(), moved, kSize).bytes(),
            mapsOf(kK, kD, cv::noArray(), kP, kSize).bytes());
}

TEST(UndistortionMaps, SkewOfTheCameraIsNotRead) {
  const cv::Matx33d skewed(400, 33, 100.25, 0, 400, 80.5, 0, 0, 1);
  EXPECT_EQ(mapsOf(skewed, kD, cv::noArray(), kP, kSize).bytes(),
            mapsOf(kK, kD, cv::noArray(), kP, kSize).bytes());
}

// Pixel (320 + 50, 240 + 100) of P = [200 100 .; 0 200 .; 0 0 1] is the ray (0, 1/2).
TEST(UndistortionMaps, SkewOfTheNewCameraIsUndone) {
  const cv::Matx33d skewed(200, 100, 0, 0, 200, 0, 0, 0, 1);
  const Maps maps = mapsOf(kK, kNoDistortion, cv::noArray(), skewed, kSize);
  const int v = static_cast<int>(std::lround((400 * std::atan(0.5) + 80.5) * 32));
  EXPECT_EQ(entryAt(maps, 370, 340), Entry(100, v / 32, 8, v % 32));
}

TEST(UndistortionMaps, EmptyDistortionIsTheEquidistantLens) {
  for (const int depth : {CV_32F, CV_64F}) {
    EXPECT_EQ(mapsOf(kK, cv::Mat(0, 0, depth), cv::noArray(), kP, kSize).bytes(),
              mapsOf(kK, kNoDistortion, cv::noArray(), kP, kSize).bytes());
  }
}

TEST(UndistortionMaps, WithoutANewCameraRaysAreInPixelsFromTheCentre) {
  const Maps maps = mapsOf(kK, kNoDistortion, cv::noArray(), cv::noArray(), cv::Size(6, 6));
  const int u = static_cast<int>(std::lround((400 * std::atan(1.0) + 100.25) * 32));
  EXPECT_EQ(entryAt(maps, 4, 3), Entry(u / 32, 80, u % 32, 16));
}

TEST(UndistortionMaps, FourthColumnOfTheNewCameraIsNotRead) {
  const cv::Matx34d wide(200, 0, 0, 5, 0, 200, 0, 6, 0, 0, 1, 7);
  EXPECT_EQ(mapsOf(kK, kD, cv::noArray(), wide, kSize).bytes(),
            mapsOf(kK, kD, cv::noArray(), kP, kSize).bytes());
}

TEST(UndistortionMaps, SinglePrecisionArgumentsAreWidened) {
  EXPECT_EQ(
      mapsOf(cv::Matx33f(kK), cv::Vec2f(0.5f, -0.25f), cv::Matx33f::eye(), cv::Matx33f(kP), kSize)
          .bytes(),
      mapsOf(kK, cv::Vec2d(0.5, -0.25), cv::Matx33d::eye(), kP, kSize).bytes());
}

// Turned by 90 degrees about the optical axis, the ray (1, 0) of the new camera is (0, -1).
TEST(UndistortionMaps, RotationTurnsTheView) {
  const cv::Matx33d R(0, -1, 0, 1, 0, 0, 0, 0, 1);
  const Maps maps = mapsOf(kK, kNoDistortion, R, kP, kSize);
  const int v = static_cast<int>(std::lround((80.5 - 400 * std::atan(1.0)) * 32));
  EXPECT_EQ(entryAt(maps, 520, 240), Entry(100, v >> 5, 8, v & 31));
}

TEST(UndistortionMaps, RotationVectorInAnyShapeIsItsMatrix) {
  const double s = std::sin(0.25);
  const double c = std::cos(0.25);
  const cv::Matx33d R(c, 0, s, 0, 1, 0, -s, 0, c);
  const std::string expected = mapsOf(kK, kD, R, kP, kSize).bytes();
  EXPECT_EQ(mapsOf(kK, kD, cv::Vec3d(0, 0.25, 0), kP, kSize).bytes(), expected);
  EXPECT_EQ(mapsOf(kK, kD, cv::Matx13f(0, 0.25f, 0), kP, kSize).bytes(), expected);
  EXPECT_EQ(mapsOf(kK, kD, cv::Mat(1, 1, CV_64FC3, cv::Scalar(0, 0.25, 0)), kP, kSize).bytes(),
            expected);
}

TEST(UndistortionMaps, VanishingRotationVectorIsTheIdentity) {
  const std::string expected = mapsOf(kK, kD, cv::noArray(), kP, kSize).bytes();
  EXPECT_EQ(mapsOf(kK, kD, cv::Vec3d(0, 0, 0), kP, kSize).bytes(), expected);
  EXPECT_EQ(mapsOf(kK, kD, cv::Vec3d(2.2e-16, 0, 0), kP, kSize).bytes(), expected);
}

TEST(UndistortionMaps, FractionsAreInUnitsOfOneThirtySecond) {
  EXPECT_EQ(entryOfColumn(10.53125), Entry(10, 0, 17, 0));
  EXPECT_EQ(entryOfColumn(-0.03125), Entry(-1, 0, 31, 0));
}

TEST(UndistortionMaps, HalvesRoundToEven) {
  EXPECT_EQ(entryOfColumn(320.5 / 32), Entry(10, 0, 0, 0));
  EXPECT_EQ(entryOfColumn(321.5 / 32), Entry(10, 0, 2, 0));
  EXPECT_EQ(entryOfColumn(-0.5 / 32), Entry(0, 0, 0, 0));
  EXPECT_EQ(entryOfColumn(-1.5 / 32), Entry(-1, 0, 30, 0));
}

TEST(UndistortionMaps, PositionsBeyondSixteenBitsWrapAround) {
  EXPECT_EQ(entryOfColumn(32767.25), Entry(32767, 0, 8, 0));
  EXPECT_EQ(entryOfColumn(32768.25), Entry(-32768, 0, 8, 0));
  EXPECT_EQ(entryOfColumn(40000), Entry(40000 - 65536, 0, 0, 0));
  EXPECT_EQ(entryOfColumn(-32769), Entry(32767, 0, 0, 0));
}

TEST(UndistortionMaps, PositionsBeyondThirtyTwoBitsShowTheTopLeftPixel) {
  EXPECT_EQ(entryOfColumn(2147483647.0 / 32), Entry(-1, 0, 31, 0));  // the last one inside
  EXPECT_EQ(entryOfColumn(2147483647.25 / 32), Entry(-1, 0, 31, 0));
  EXPECT_EQ(entryOfColumn(2147483647.5 / 32), kTopLeft);
  EXPECT_EQ(entryOfColumn(2147483648.0 / 32), kTopLeft);
  EXPECT_EQ(entryOfColumn(-2147483649.0 / 32), kTopLeft);
  EXPECT_EQ(entryOfColumn(1e300), kTopLeft);
  EXPECT_EQ(entryOfColumn(-std::numeric_limits<double>::infinity()), kTopLeft);
  EXPECT_EQ(entryOfColumn(std::numeric_limits<double>::quiet_NaN()), kTopLeft);
}

TEST(UndistortionMaps, RaysAwayFromTheCameraShowTheTopLeftPixel) {
  const cv::Matx33d back(1, 0, 0, 0, -1, 0, 0, 0, -1);
  const Maps maps = mapsOf(kK, kD, back, kP, cv::Size(8, 6));
  EXPECT_EQ(cv::norm(maps.whole, cv::NORM_INF), 0);
  EXPECT_EQ(cv::norm(maps.index, cv::NORM_INF), 0);
}

TEST(UndistortionMaps, RaysAcrossTheAxisShowTheTopLeftPixel) {
  // Turned by 90 degrees about y: W = (column - 320)/256, exact at every step.
  const cv::Matx33d side(0, 0, 1, 0, 1, 0, -1, 0, 0);
  const cv::Matx33d P(256, 0, 0, 0, 256, 0, 0, 0, 1);
  const Maps maps = mapsOf(kK, kD, side, P, kSize);
  EXPECT_EQ(entryAt(maps, 319, 200), kTopLeft);
  EXPECT_EQ(entryAt(maps, 320, 200), kTopLeft);
  EXPECT_NE(entryAt(maps, 321, 200), kTopLeft);
}

TEST(UndistortionMaps, SingularCameraShowsTheTopLeftPixel) {
  const cv::Matx33d singular(200, 0, 0, 0, 0, 0, 0, 0, 1);
  const Maps maps = mapsOf(kK, kD, cv::noArray(), singular, cv::Size(8, 6));
  EXPECT_EQ(cv::norm(maps.whole, cv::NORM_INF), 0);
  EXPECT_EQ(cv::norm(maps.index, cv::NORM_INF), 0);
}

// With positions of nearly 32 bits the rounding of the steps shows.
TEST(UndistortionMaps, RaysAreSteppedAlongTheRow) {
  constexpr int kWidth = 20000;
  constexpr double kFocal = 4e7;
  const cv::Matx33d K(kFocal, 0, 0, 0, kFocal, 0, 0, 0, 1);
  const cv::Matx33d P(3000, 0, 0, 0, 3000, 0, 0, 0, 1);
  const Maps maps = mapsOf(K, kNoDistortion, cv::noArray(), P, cv::Size(kWidth, 1));
  const auto entryOfRay = [](double X) {
    // Row 0 lies one pixel above the centre.
    const double y = -3000 * (1 / (3000.0 * 3000.0));
    const double r = std::sqrt(X * X + y * y);
    const auto u = std::lrint(kFocal * X * (std::atan(r) / r) * 32);
    return cv::Vec2i(static_cast<short>(u >> 5), static_cast<int>(u & 31));
  };
  const double step = 3000 * (1 / (3000.0 * 3000.0));
  const double start = (0.0 * 1 - 10000.0 * 3000) * (1 / (3000.0 * 3000.0));
  int stepped = 0;
  int multiplied = 0;
  double X = start;
  for (int j = 0; j < kWidth; ++j) {
    const Entry entry = entryAt(maps, j, 0);
    const cv::Vec2i column(entry[0], entry[2]);
    stepped += column == entryOfRay(X) ? 1 : 0;
    multiplied += column == entryOfRay(start + j * step) ? 1 : 0;
    X += step;
  }
  EXPECT_EQ(stepped, kWidth);
  EXPECT_LT(multiplied, kWidth);
}

TEST(UndistortionMaps, EmptySizesMakeEmptyMaps) {
  for (const cv::Size size : {cv::Size(0, 5), cv::Size(5, 0), cv::Size(0, 0)}) {
    const Maps maps = mapsOf(kK, kD, cv::noArray(), kP, size);
    EXPECT_EQ(maps.whole.total(), 0U);
    EXPECT_EQ(maps.whole.type(), CV_16SC2);
    EXPECT_EQ(maps.index.total(), 0U);
    EXPECT_EQ(maps.index.type(), CV_16UC1);
  }
}

TEST(UndistortionMaps, NegativeSizeRaises) {
  EXPECT_THROW(mapsOf(kK, kD, cv::noArray(), kP, cv::Size(-1, 5)), cv::Exception);
  EXPECT_THROW(mapsOf(kK, kD, cv::noArray(), kP, cv::Size(5, -1)), cv::Exception);
}

::testing::AssertionResult refuses(const char* text, cv::InputArray K, cv::InputArray D,
                                   cv::InputArray R, cv::InputArray P) {
  return support::refuses(text, "initUndistortRectifyMap",
                          [&] { mapsOf(K, D, R, P, cv::Size(4, 4)); });
}

TEST(UndistortionMaps, CameraAndDistortionMustBeFloat) {
  const char* text =
      "(K.depth() == CV_32F || K.depth() == CV_64F) && "
      "(D.depth() == CV_32F || D.depth() == CV_64F)";
  EXPECT_TRUE(refuses(text, cv::Mat::eye(3, 3, CV_32S), kD, cv::noArray(), kP));
  EXPECT_TRUE(refuses(text, kK, cv::Vec2i(0, 0), cv::noArray(), kP));
  EXPECT_TRUE(refuses(text, kK, cv::Mat(), cv::noArray(), kP));
  EXPECT_TRUE(refuses(text, kK, cv::noArray(), cv::noArray(), kP));
  EXPECT_TRUE(refuses(text, cv::noArray(), kD, cv::noArray(), kP));
}

TEST(UndistortionMaps, RotationAndNewCameraMustBeFloat) {
  const char* text =
      "(P.empty() || P.depth() == CV_32F || P.depth() == CV_64F) && "
      "(R.empty() || R.depth() == CV_32F || R.depth() == CV_64F)";
  EXPECT_TRUE(refuses(text, kK, kD, cv::Mat::eye(3, 3, CV_32S), kP));
  EXPECT_TRUE(refuses(text, kK, kD, cv::noArray(), cv::Mat::eye(3, 3, CV_32S)));
}

TEST(UndistortionMaps, CameraMustBeThreeByThreeAndDistortionHaveTwoElements) {
  const char* text = "K.size() == Size(3, 3) && (D.empty() || D.total() == 2)";
  EXPECT_TRUE(refuses(text, cv::Matx34d::eye(), kD, cv::noArray(), kP));
  EXPECT_TRUE(refuses(text, kK, cv::Vec4d(), cv::noArray(), kP));
}

TEST(UndistortionMaps, RotationMustBeThreeByThreeOrHaveThreeElements) {
  const char* text = "R.empty() || R.size() == Size(3, 3) || R.total() * R.channels() == 3";
  EXPECT_TRUE(refuses(text, kK, kD, cv::Vec4d(), kP));
  EXPECT_TRUE(refuses(text, kK, kD, cv::Matx22d(), kP));
}

TEST(UndistortionMaps, NewCameraMustHaveThreeRowsOfThreeOrFour) {
  const char* text = "P.empty() || P.size() == Size(3, 3) || P.size() == Size(4, 3)";
  EXPECT_TRUE(refuses(text, kK, kD, cv::noArray(), cv::Matx43d()));
  EXPECT_TRUE(refuses(text, kK, kD, cv::noArray(), cv::Vec3d()));
}

TEST(UndistortionMaps, EarlierChecksComeFirst) {
  EXPECT_TRUE(refuses("K.size() == Size(3, 3) && (D.empty() || D.total() == 2)", kK, cv::Vec4d(),
                      cv::Vec4d(), cv::Vec4d()));
  EXPECT_TRUE(refuses("R.empty() || R.size() == Size(3, 3) || R.total() * R.channels() == 3", kK,
                      kD, cv::Vec4d(), cv::Vec4d()));
}

TEST(UndistortionMaps, MapsAreCreatedBeforeTheChecks) {
  Maps maps;
  EXPECT_THROW(fisheye::initUndistortRectifyMap(cv::Mat(), kD, cv::noArray(), kP, cv::Size(7, 3),
                                                CV_16SC2, maps.whole, maps.index),
               cv::Exception);
  EXPECT_EQ(maps.whole.size(), cv::Size(7, 3));
  EXPECT_EQ(maps.whole.type(), CV_16SC2);
  EXPECT_EQ(maps.index.size(), cv::Size(7, 3));
  EXPECT_EQ(maps.index.type(), CV_16UC1);
}

TEST(UndistortionMaps, OtherMapTypesRaise) {
  for (const int type : {CV_32FC1, CV_32FC2, CV_16UC2, CV_16SC1, 0, -1}) {
    Maps maps;
    EXPECT_TRUE(support::refuses("m1type == CV_16SC2", "initUndistortRectifyMap", [&] {
      fisheye::initUndistortRectifyMap(kK, kD, cv::noArray(), kP, kSize, type, maps.whole,
                                       maps.index);
    }));
    EXPECT_TRUE(maps.whole.empty());
  }
}

struct RandomCamera {
  cv::Mat K, D, R, P;
  cv::Size size;
};

RandomCamera randomCamera(support::Random& random) {
  const auto number = [&](double reach) { return random.uniform(-reach, reach); };
  const auto oneIn = [&](int n) { return random.uniform(0, n) < 1; };
  RandomCamera camera;
  camera.size = {static_cast<int>(random.uniform(1, 90)), static_cast<int>(random.uniform(1, 30))};
  const double focal = oneIn(4) ? number(1e6) : random.uniform(5, 60);
  const double centre = oneIn(4) ? number(1e8) : random.uniform(0, 60);
  camera.K = (cv::Mat_<double>(3, 3) << focal, number(9), centre, 0, focal * random.uniform(0.9, 1),
              random.uniform(0, 40), 0, 0, 1);
  camera.D = oneIn(5) ? cv::Mat(0, 0, CV_64F)
                      : cv::Mat((cv::Mat_<double>(2, 1) << number(0.5), number(0.5)));
  if (!oneIn(4)) {
    const double reach = oneIn(2) ? 0.3 : 3;  // the larger ones look behind the camera
    camera.R = plain::rotationMatrix(
        (cv::Mat_<double>(3, 1) << number(reach), number(reach), number(reach)));
  }
  if (!oneIn(5)) {
    camera.P = cv::Mat::eye(3, oneIn(2) ? 4 : 3, CV_64F);
    camera.P.at<double>(0, 0) = random.uniform(5, 60);
    camera.P.at<double>(0, 1) = number(5);
    camera.P.at<double>(1, 1) = oneIn(10) ? 0 : number(60);
    if (oneIn(3)) {
      camera.P.at<double>(2, 0) = number(0.05);
      camera.P.at<double>(2, 1) = number(0.05);
    }
  }
  return camera;
}

TEST(UndistortionMaps, EqualThePlainMapsByteForByte) {
  support::Random random(23);
  int behind = 0;
  for (int i = 0; i < 1500; ++i) {
    const RandomCamera camera = randomCamera(random);
    Maps plainMaps;
    plain::undistortRectifyMap(camera.K, camera.D, camera.R, camera.P, camera.size, plainMaps.whole,
                               plainMaps.index);
    const Maps maps = mapsOf(camera.K, camera.D, camera.R, camera.P, camera.size);
    ASSERT_EQ(maps.bytes(), plainMaps.bytes()) << "camera " << i;
    behind += cv::countNonZero(maps.index) < static_cast<int>(maps.index.total() / 2) ? 1 : 0;
  }
  EXPECT_GT(behind, 50);  // or the generator no longer reaches rays without a position
}

}  // namespace
