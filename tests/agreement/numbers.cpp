#include <array>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "agreement/computations.h"
#include "fisheye/fisheye.h"
#include "support/synthetic_rig.h"

using namespace fisheye_calibration;

namespace agreement {
namespace {

using support::Random;

float draw(Random& random, double low, double high) {
  return static_cast<float>(random.uniform(low, high));
}

FishEyeCalibrationParam randomCamera(Random& random) {
  FishEyeCalibrationParam p{};
  p.fx = draw(random, 300, 900);
  p.fy = draw(random, 300, 900);
  p.u0 = draw(random, 500, 800);
  p.v0 = draw(random, 400, 500);
  p.skewness = draw(random, -0.01, 0.01);
  p.k0 = random.uniform(-0.03, 0.03);
  p.k1 = random.uniform(-0.05, 0.02);
  p.Rx = draw(random, -2, 2);
  p.Ry = draw(random, -2, 2);
  p.Rz = draw(random, -2, 2);
  p.Tx = draw(random, -500, 500);
  p.Ty = draw(random, -500, 500);
  p.Tz = draw(random, 300, 900);
  p.Pixel = draw(random, 0.1, 1);
  p.DatumPtXw = draw(random, -200, 200);
  p.DatumPtYw = draw(random, -200, 200);
  return p;
}

DualFishEyeCalibrationParam randomDual(Random& random) {
  DualFishEyeCalibrationParam dual{};
  dual.Pixel = draw(random, 0.1, 1);
  dual.DatumImagePtX = static_cast<int>(random.uniform(-3000, 3000));
  dual.DatumImagePtY = static_cast<int>(random.uniform(-3000, 3000));
  dual.DatumPtXw = draw(random, -200, 200);
  dual.DatumPtYw = draw(random, -200, 200);
  return dual;
}

void addNumbers(Results& results, const std::string& name, const std::vector<float>& numbers) {
  results.addExact(name, numbers.data(), numbers.size() * sizeof(float));
}

struct Solution {
  cv::Mat K;
  cv::Mat D;
  std::vector<cv::Vec3d> rvecs;
  std::vector<cv::Vec3d> tvecs;
};

void append(std::vector<double>& numbers, const cv::Mat& mat) {
  numbers.insert(numbers.end(), mat.begin<double>(), mat.end<double>());
}

}  // namespace

void addConversions(Results& results) {
  Random random(104);
  std::vector<float> raw;
  std::vector<float> corrected;
  std::vector<float> second;
  std::vector<float> world;
  std::vector<float> stitched;
  for (int i = 0; i < 20000; ++i) {
    const FishEyeCalibrationParam p = randomCamera(random);
    const DualFishEyeCalibrationParam dual = randomDual(random);
    const float X = draw(random, -1000, 1000);
    const float Y = draw(random, -1000, 1000);
    const float Z = draw(random, -50, 50);
    float x = 0;
    float y = 0;
    float z = 0;
    WorldToRawImagePoint(X, Y, Z, p, x, y);
    raw.insert(raw.end(), {x, y});
    WorldToCorrectedImagePoint(X, Y, Z, p, 640, 480, x, y);
    corrected.insert(corrected.end(), {x, y});
    WorldToSecondCorrectedImagePoint(X, Y, Z, p, 640, 480, x, y);
    second.insert(second.end(), {x, y});
    CorrectedImageToWorldPoint(X, Y, 640, 480, p, x, y, z);
    world.insert(world.end(), {x, y});
    DualCam_WorldToSecondCorrectedImagePoint(X, Y, Z, dual, x, y);
    stitched.insert(stitched.end(), {x, y});
    DualCam_CorrectedImageToWorldPoint(X, Y, dual, x, y, z);
    stitched.insert(stitched.end(), {x, y});
  }
  addNumbers(results, "conversion.world-to-raw", raw);
  addNumbers(results, "conversion.world-to-corrected", corrected);
  addNumbers(results, "conversion.world-to-second-corrected", second);
  addNumbers(results, "conversion.corrected-to-world", world);
  addNumbers(results, "conversion.stitched", stitched);
}

void addSolver(Results& results) {
  for (std::uint64_t seed = 1; seed <= 12; ++seed) {
    const std::string name = "solver." + std::to_string(seed);
    const support::Rig rig = support::randomRig(seed, seed % 3 == 0 ? 1 : 4);
    std::vector<std::vector<cv::Point3f>> objectPoints;
    std::vector<std::vector<cv::Point2f>> imagePoints;
    for (const support::RigView& view : rig.views) {
      objectPoints.push_back(view.objectPoints32());
      imagePoints.push_back(view.imagePoints32());
      results.addExact(name + ".input." + std::to_string(imagePoints.size()),
                       imagePoints.back().data(), imagePoints.back().size() * sizeof(cv::Point2f));
    }
    Solution s;
    const cv::TermCriteria criteria(cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 20, 1e-6);
    const double rms = fisheye::calibrate(objectPoints, imagePoints, rig.camera.imageSize, s.K, s.D,
                                          s.rvecs, s.tvecs, 10, criteria);
    std::vector<double> numbers{rms};
    append(numbers, s.K);
    append(numbers, s.D);
    for (const cv::Vec3d& rvec : s.rvecs) append(numbers, cv::Mat(rvec));
    for (const cv::Vec3d& tvec : s.tvecs) append(numbers, cv::Mat(tvec));
    results.addNear(name, 1e-9, numbers);
  }
}

void addRegistration(Results& results) {
  for (std::uint64_t seed = 21; seed <= 28; ++seed) {
    const std::string name = "registration." + std::to_string(seed);
    const support::Rig rig = support::randomRig(seed, 1);
    std::vector<CalibrationPoint> points = support::calibrationPoints(rig.views[0]);
    const cv::Size size = rig.camera.imageSize;
    std::vector<unsigned char> image(static_cast<std::size_t>(size.area()));
    FishEyeCalibrationParam p{};
    double error = 0;
    const bool calibrated = SingleCamCalibration(image.data(), size.width, size.height, 8, points,
                                                 size.width, size.height, p, error);
    results.addExact(name + ".result", &calibrated, sizeof calibrated);
    const double solved[] = {p.k0, p.k1, error};
    results.addNear(name + ".distortion", 1e-9, solved);
    // Fields of 32 bits: one unit in the last place, where both systems round to another side.
    const double fields[] = {p.u0, p.v0, p.fx, p.fy, p.R1, p.R2, p.R3, p.R4, p.R5, p.R6,
                             p.R7, p.R8, p.R9, p.Rx, p.Ry, p.Rz, p.Tx, p.Ty, p.Tz};
    results.addNear(name + ".camera", 1.2e-7, fields);
    // The second correction rests on the image library's homography, which is not the same to the
    // last digits in all builds of it.
    const double homography[] = {p.p1,       p.p2,       p.p3, p.p4,    p.p5,      p.p6,
                                 1e3 * p.p7, 1e3 * p.p8, p.p9, p.Pixel, p.ImageDx, p.ImageDy};
    results.addNear(name + ".second-correction", 1e-6, homography);

    std::array<double, 8> affine{};
    const bool fitted = HandEyeCalibration(points, affine.data(), affine[6], affine[7]);
    results.addExact(name + ".affine-result", &fitted, sizeof fitted);
    results.addNear(name + ".affine", 1e-9, affine);
  }
}

}  // namespace agreement
