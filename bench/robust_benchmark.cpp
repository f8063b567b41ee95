// robust::calibrateRobustly on 50 views of 100 points, and one step of its iteration against the
// same step by one dense matrix. One thread.
#include <benchmark/benchmark.h>

#include <cmath>
#include <string>

#include "instruction_sets.h"
#include "program.h"
#include "robust/bundle.h"
#include "robust/robust_calibration.h"
#include "support/synthetic_rig.h"
#include "timing.h"

namespace {

namespace lens = fisheye_calibration::lens;
namespace robust = fisheye_calibration::robust;
namespace solver = fisheye_calibration::solver;

constexpr int kPointsPerSide = 10;
constexpr double kNoise = 0.3;  // px

// The benchmark library prints what went wrong and returns as if nothing had.
bool anyFailed = false;

bench::Report* report = nullptr;

void fail(benchmark::State& state, const char* reason) {
  anyFailed = true;
  state.SkipWithError(reason);
}

struct Scene {
  support::RigCamera camera;
  std::vector<solver::ViewPoints> views;
  robust::Bundle truth;

  explicit Scene(int count) {
    support::Bed bed;
    bed.columns = bed.rows = kPointsPerSide;
    bed.spacing = 32;
    support::Random random(5);
    truth.camera = {.fx = camera.fx,
                    .fy = camera.fy,
                    .cx = camera.cx,
                    .cy = camera.cy,
                    .k0 = camera.k0,
                    .k1 = camera.k1};
    for (int j = 0; j < count; ++j) {
      const double distance = random.uniform(140, 260);
      const double tiltX = random.uniform(-0.5, 0.5);
      const double tiltY = random.uniform(-0.5, 0.5);
      const auto pose = support::poseOver(bed, distance, tiltX, tiltY, random.uniform(-0.6, 0.6));
      const auto seen = support::seen(camera, bed, pose, kNoise, static_cast<std::uint64_t>(j) + 1);
      solver::ViewPoints view;
      for (std::size_t i = 0; i < seen.objectPoints.size(); ++i) {
        view.X.push_back(seen.objectPoints[i].x);
        view.Y.push_back(seen.objectPoints[i].y);
        view.Z.push_back(0);
        view.image.x.push_back(seen.imagePoints[i].x);
        view.image.y.push_back(seen.imagePoints[i].y);
      }
      views.push_back(view);
      truth.poses.push_back({pose.rotation, pose.translation});
    }
  }
};

void wholeCalibration(benchmark::State& state) {
  const Scene scene(static_cast<int>(state.range(0)));
  for ([[maybe_unused]] auto step : state) {
    const auto result = robust::calibrateRobustly(scene.views, scene.camera.imageSize);
    if (result.status != robust::RobustStatus::kSolved) {
      fail(state, "not solved");
      break;
    }
  }
}
BENCHMARK(wholeCalibration)->Arg(1)->Arg(5)->Arg(50)->Unit(benchmark::kMillisecond);

// The arrow-shaped system as one dense matrix.
void fillDense(const robust::BundleEquations& equations, cv::Mat& A, cv::Mat& b) {
  const int unknowns = 6 + 6 * static_cast<int>(equations.M.views.size());
  A = cv::Mat::zeros(unknowns, unknowns, CV_64F);
  b.create(unknowns, 1, CV_64F);
  for (int r = 0; r < 6; ++r) {
    b.at<double>(r) = equations.b.lens[r];
  }
  for (std::size_t j = 0; j < equations.M.views.size(); ++j) {
    const auto at = [j](int k) { return k < 6 ? k : 6 * static_cast<int>(j) + k; };
    for (int r = 0; r < 12; ++r) {
      for (int c = 0; c < 12; ++c) {
        A.at<double>(at(r), at(c)) += equations.M.views[j](r, c);
      }
      if (r >= 6) {
        b.at<double>(at(r)) = equations.b.poses[j][r - 6];
      }
    }
  }
}

// Counter "ratio": time of the dense solution over that of the elimination.
void stepOfTheIteration(benchmark::State& state) {
  const Scene scene(static_cast<int>(state.range(0)));
  const robust::BundleProblem problem{&scene.views, robust::PointWeights(scene.views.size()),
                                      robust::LensPrior(scene.camera.imageSize, false), 1, false};
  const robust::BundleEquations equations = robust::bundleEquations(problem, scene.truth);
  cv::Mat A;
  cv::Mat b;
  fillDense(equations, A, b);
  robust::ArrowVector eliminated;
  cv::Mat dense;
  double ours = 0;
  double plain = 0;
  for ([[maybe_unused]] auto step : state) {
    ours += bench::milliseconds(
        [&] { eliminated = robust::ArrowInverse(equations.M, false).times(equations.b); });
    plain += bench::milliseconds([&] { cv::solve(A, b, dense, cv::DECOMP_CHOLESKY); });
  }
  if (!(std::abs(eliminated.lens[0] - dense.at<double>(0)) <
        1e-6 * std::abs(dense.at<double>(0)))) {
    fail(state, "the two solutions differ");
  }
  state.counters["ratio"] = plain / ours;
  report->add(std::to_string(state.range(0)) + " views, dense/ours", bench::Better::kHigher,
              bench::nameOfBestInstructionSet(), plain / ours);
}
BENCHMARK(stepOfTheIteration)->Arg(1)->Arg(5)->Arg(50)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);  // takes its own options out of the arguments
  return bench::runBenchmark(argc, argv, "robust", [](bench::Report& ratios) {
    report = &ratios;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return !anyFailed;
  });
}
