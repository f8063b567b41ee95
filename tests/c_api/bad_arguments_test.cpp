// Null pointers and numbers out of range are refused by every function, by the argument's name.
#include <gtest/gtest.h>

#include <climits>
#include <limits>

#include "c_api/host_pictures.h"
#include "c_api/records.h"

using namespace c_api_tests;

namespace {

class CBadArguments : public testing::Test {
 protected:
  fcal_camera camera_{};
  fcal_dual dual_{};
  fcal_solution solution_{};
  fcal_point points_[9] = {};
  float numbers_[30] = {};
  double doubles_[30] = {};
  int32_t width_ = 0;
  int32_t height_ = 0;
  HostPicture frame_{8, 4, 8, kRowLayouts[0], 9};
  fcal_rig_view rig_{*frame_.image(), &camera_, points_, 9};
};

TEST_F(CBadArguments, OfCalibrate) {
  const auto call = [&](int32_t width, int32_t height, fcal_point* points, int32_t count,
                        int32_t correctedWidth, int32_t correctedHeight, fcal_camera* camera,
                        double* rms) {
    return fcal_calibrate(width, height, points, count, correctedWidth, correctedHeight, camera,
                          rms);
  };
  double* const rms = doubles_;
  EXPECT_TRUE(refuses(call(0, 9, points_, 9, 9, 9, &camera_, rms), "width: not positive"));
  EXPECT_TRUE(refuses(call(9, INT_MIN, points_, 9, 9, 9, &camera_, rms), "height: not positive"));
  EXPECT_TRUE(refuses(call(9, 9, nullptr, 9, 9, 9, &camera_, rms), "points: null"));
  EXPECT_TRUE(refuses(call(9, 9, points_, -1, 9, 9, &camera_, rms), "points: count is negative"));
  EXPECT_TRUE(
      refuses(call(9, 9, points_, 9, 0, 9, &camera_, rms), "corrected_width: not positive"));
  EXPECT_TRUE(
      refuses(call(9, 9, points_, 9, 9, -9, &camera_, rms), "corrected_height: not positive"));
  EXPECT_TRUE(refuses(call(9, 9, points_, 9, 9, 9, nullptr, rms), "camera: null"));
  EXPECT_TRUE(refuses(call(9, 9, points_, 9, 9, 9, &camera_, nullptr), "rms: null"));
}

TEST_F(CBadArguments, OfParameterFiles) {
  EXPECT_TRUE(refuses(fcal_save_camera(nullptr, &camera_), "path: null"));
  EXPECT_TRUE(refuses(fcal_save_camera("x", nullptr), "camera: null"));
  EXPECT_TRUE(refuses(fcal_load_camera(nullptr, &camera_), "path: null"));
  EXPECT_TRUE(refuses(fcal_load_camera("x", nullptr), "camera: null"));
  EXPECT_TRUE(refuses(fcal_save_dual(nullptr, &dual_), "path: null"));
  EXPECT_TRUE(refuses(fcal_save_dual("x", nullptr), "dual: null"));
  EXPECT_TRUE(refuses(fcal_load_dual(nullptr, &dual_), "path: null"));
  EXPECT_TRUE(refuses(fcal_load_dual("x", nullptr), "dual: null"));
}

TEST_F(CBadArguments, OfPictures) {
  EXPECT_TRUE(
      refuses(fcal_correct(frame_.image(), nullptr, frame_.image(), nullptr), "camera: null"));
  EXPECT_TRUE(
      refuses(fcal_crop_stitched(frame_.image(), 0, 0, frame_.image(), nullptr), "dual: null"));
}

// in(camera or record, array, count, array): every mapping of points.
template <class Record, class Function>
void expectMappingRefuses(const Function& map, const Record& record, const std::string& recordName,
                          const std::string& in, const std::string& out) {
  float numbers[9] = {};
  float results[9] = {};
  EXPECT_TRUE(refuses(map(static_cast<const Record*>(nullptr), numbers, 1, results),
                      recordName + ": null"));
  EXPECT_TRUE(refuses(map(&record, nullptr, 1, results), in + ": null"));
  EXPECT_TRUE(refuses(map(&record, numbers, 1, nullptr), out + ": null"));
  for (const int32_t count : {-1, INT_MIN}) {
    EXPECT_TRUE(refuses(map(&record, numbers, count, results), in + ": count is negative"));
  }
  EXPECT_TRUE(succeeds(map(&record, nullptr, 0, nullptr)));
}

TEST_F(CBadArguments, OfMappings) {
  expectMappingRefuses(fcal_world_to_raw, camera_, "camera", "world_xyz", "raw_xy");
  expectMappingRefuses(fcal_raw_to_world, camera_, "camera", "raw_xy", "world_xy");
  expectMappingRefuses(fcal_world_to_stitched, dual_, "dual", "world_xy", "stitched_uv");
  expectMappingRefuses(fcal_stitched_to_world, dual_, "dual", "stitched_uv", "world_xy");
  const auto centred = [](auto map) {
    return [map](const fcal_camera* camera, const float* in, int32_t count, float* out) {
      return map(camera, 4.0F, 3.0F, in, count, out);
    };
  };
  expectMappingRefuses(centred(fcal_world_to_corrected), camera_, "camera", "world_xyz",
                       "corrected_xy");
  expectMappingRefuses(centred(fcal_world_to_view), camera_, "camera", "world_xy", "view_xy");
  expectMappingRefuses(centred(fcal_view_to_world), camera_, "camera", "view_xy", "world_xy");
  expectMappingRefuses(centred(fcal_raw_to_corrected), camera_, "camera", "raw_xy", "corrected_xy");
}

TEST_F(CBadArguments, OfRegistration) {
  double* const d = doubles_;
  EXPECT_TRUE(refuses(fcal_fit_affine(nullptr, 9, d, d + 6, d + 7), "points: null"));
  EXPECT_TRUE(refuses(fcal_fit_affine(points_, -1, d, d + 6, d + 7), "points: count is negative"));
  EXPECT_TRUE(refuses(fcal_fit_affine(points_, 9, nullptr, d + 6, d + 7), "coefficients: null"));
  EXPECT_TRUE(refuses(fcal_fit_affine(points_, 9, d, nullptr, d + 7), "error_x: null"));
  EXPECT_TRUE(refuses(fcal_fit_affine(points_, 9, d, d + 6, nullptr), "error_y: null"));
  EXPECT_TRUE(refuses(fcal_straighten(nullptr, 4), "points: null"));
  EXPECT_TRUE(refuses(fcal_straighten(points_, -4), "points: count is negative"));
}

TEST_F(CBadArguments, OfCommonPoints) {
  const auto call = [&](const fcal_point* p1, int32_t n1, const fcal_point* p2, int32_t n2,
                        fcal_point* c1, int32_t m1, int32_t* k1, fcal_point* c2, int32_t m2,
                        int32_t* k2) {
    return fcal_common_points(p1, n1, p2, n2, 9, c1, m1, k1, c2, m2, k2);
  };
  fcal_point common[2] = {};
  fcal_point* const c = common;
  fcal_point* const p = points_;
  int32_t* const k1 = &width_;
  int32_t* const k2 = &height_;
  EXPECT_TRUE(refuses(call(nullptr, 1, p, 1, c, 1, k1, c + 1, 1, k2), "points1: null"));
  EXPECT_TRUE(refuses(call(p, -1, p, 1, c, 1, k1, c + 1, 1, k2), "points1: count is negative"));
  EXPECT_TRUE(refuses(call(p, 1, nullptr, 1, c, 1, k1, c + 1, 1, k2), "points2: null"));
  EXPECT_TRUE(refuses(call(p, 1, p, -1, c, 1, k1, c + 1, 1, k2), "points2: count is negative"));
  EXPECT_TRUE(refuses(call(p, 1, p, 1, nullptr, 1, k1, c + 1, 1, k2), "common1: null"));
  EXPECT_TRUE(refuses(call(p, 1, p, 1, c, -1, k1, c + 1, 1, k2), "common1: count is negative"));
  EXPECT_TRUE(refuses(call(p, 1, p, 1, c, 1, nullptr, c + 1, 1, k2), "needed1: null"));
  EXPECT_TRUE(refuses(call(p, 1, p, 1, c, 1, k1, nullptr, 1, k2), "common2: null"));
  EXPECT_TRUE(refuses(call(p, 1, p, 1, c, 1, k1, c + 1, -1, k2), "common2: count is negative"));
  EXPECT_TRUE(refuses(call(p, 1, p, 1, c, 1, k1, c + 1, 1, nullptr), "needed2: null"));
}

TEST_F(CBadArguments, OfStitching) {
  EXPECT_TRUE(refuses(fcal_stitched_size(nullptr, &rig_, &width_, &height_), "first: null"));
  EXPECT_TRUE(refuses(fcal_stitched_size(&rig_, nullptr, &width_, &height_), "second: null"));
  EXPECT_TRUE(refuses(fcal_stitched_size(&rig_, &rig_, nullptr, &height_), "width: null"));
  EXPECT_TRUE(refuses(fcal_stitched_size(&rig_, &rig_, &width_, nullptr), "height: null"));
  EXPECT_TRUE(refuses(fcal_stitch(nullptr, &rig_, frame_.image(), &dual_), "first: null"));
  EXPECT_TRUE(refuses(fcal_stitch(&rig_, nullptr, frame_.image(), &dual_), "second: null"));
  EXPECT_TRUE(refuses(fcal_stitch(&rig_, &rig_, frame_.image(), nullptr), "dual: null"));
  fcal_rig_view bad = rig_;
  bad.camera = nullptr;
  EXPECT_TRUE(refuses(fcal_stitch(&bad, &rig_, frame_.image(), &dual_), "first.camera: null"));
  bad = rig_;
  bad.points = nullptr;
  EXPECT_TRUE(refuses(fcal_stitch(&rig_, &bad, frame_.image(), &dual_), "second.points: null"));
  bad = rig_;
  bad.count = -1;
  EXPECT_TRUE(refuses(fcal_stitched_size(&rig_, &bad, &width_, &height_),
                      "second.points: count is negative"));
}

TEST_F(CBadArguments, OfSolutions) {
  double* const d = doubles_;
  EXPECT_TRUE(
      refuses(fcal_camera_of_solution(nullptr, points_, 9, 9, 9, &camera_, d), "solution: null"));
  EXPECT_TRUE(
      refuses(fcal_camera_of_solution(&solution_, nullptr, 9, 9, 9, &camera_, d), "points: null"));
  EXPECT_TRUE(refuses(fcal_camera_of_solution(&solution_, points_, 9, 0, 9, &camera_, d),
                      "corrected_width: not positive"));
  EXPECT_TRUE(
      refuses(fcal_camera_of_solution(&solution_, points_, 9, 9, 9, nullptr, d), "camera: null"));
  EXPECT_TRUE(refuses(fcal_camera_of_solution(&solution_, points_, 9, 9, 9, &camera_, nullptr),
                      "rms: null"));
  EXPECT_TRUE(refuses(fcal_solution_of_camera(nullptr, &solution_), "camera: null"));
  EXPECT_TRUE(refuses(fcal_solution_of_camera(&camera_, nullptr), "solution: null"));
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_TRUE(refuses(fcal_place_view(0, 0, 0, 9, 9, &camera_), "pixel: not positive"));
  EXPECT_TRUE(refuses(fcal_place_view(0, 0, nan, 9, 9, &camera_), "pixel: not positive"));
  EXPECT_TRUE(refuses(fcal_place_view(0, 0, 1, 0, 9, &camera_), "width: not positive"));
  EXPECT_TRUE(refuses(fcal_place_view(0, 0, 1, 9, -1, &camera_), "height: not positive"));
  EXPECT_TRUE(refuses(fcal_place_view(0, 0, 1, 9, 9, nullptr), "camera: null"));
  EXPECT_TRUE(refuses(fcal_raw_to_bed(nullptr, d, 1, d + 9), "solution: null"));
  EXPECT_TRUE(refuses(fcal_raw_to_bed(&solution_, nullptr, 1, d + 9), "raw_xy: null"));
  EXPECT_TRUE(refuses(fcal_raw_to_bed(&solution_, d, -1, d + 9), "raw_xy: count is negative"));
  EXPECT_TRUE(refuses(fcal_raw_to_bed(&solution_, d, 1, nullptr), "bed_xy: null"));
  EXPECT_TRUE(refuses(fcal_bed_bounds(nullptr, d, 1, d + 9), "solution: null"));
  EXPECT_TRUE(refuses(fcal_bed_bounds(&solution_, nullptr, 1, d + 9), "bed_xy: null"));
  EXPECT_TRUE(refuses(fcal_bed_bounds(&solution_, d, -1, d + 9), "bed_xy: count is negative"));
  EXPECT_TRUE(refuses(fcal_bed_bounds(&solution_, d, 1, nullptr), "bounds: null"));
  EXPECT_TRUE(refuses(fcal_bed_errors(nullptr, &solution_, d, 1, d + 9), "solution: null"));
  EXPECT_TRUE(refuses(fcal_bed_errors(&solution_, nullptr, d, 1, d + 9), "judged: null"));
  EXPECT_TRUE(refuses(fcal_bed_errors(&solution_, &solution_, nullptr, 1, d), "bed_xy: null"));
  EXPECT_TRUE(
      refuses(fcal_bed_errors(&solution_, &solution_, d, -1, d), "bed_xy: count is negative"));
  EXPECT_TRUE(refuses(fcal_bed_errors(&solution_, &solution_, d, 1, nullptr), "errors: null"));
}

}  // namespace
