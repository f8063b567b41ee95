#include "solver/normal_equations.h"

#include "solver/view_sums.h"

namespace fisheye_calibration::solver {
namespace {

constexpr std::size_t kPose = 6;

// Indices of a view's unknowns in the whole system: first the estimated intrinsics, shared by all
// views, then the poses, view by view. Held intrinsics have none.
class Places {
 public:
  explicit Places(const EstimatedIntrinsics& estimated) {
    for (std::size_t k = 0; k < kIntrinsics; ++k) {
      place_[k] = estimated[k] ? intrinsics_++ : kNowhere;
    }
  }

  static constexpr int kNowhere = -1;

  int intrinsics() const { return intrinsics_; }

  int of(std::size_t unknown, std::size_t view) const {
    if (unknown < kIntrinsics) {
      return place_[unknown];
    }
    return intrinsics_ + static_cast<int>(view * kPose + unknown - kIntrinsics);
  }

 private:
  std::array<int, kIntrinsics> place_;
  int intrinsics_ = 0;
};

// Blocks between the poses of different views are 0.
void addView(const NormalEquations<kAllParameters>& equations, std::size_t view,
             const Places& places, ReducedSystem& system) {
  for (std::size_t i = 0; i < kAllParameters; ++i) {
    const int row = places.of(i, view);
    if (row == Places::kNowhere) {
      continue;
    }
    for (std::size_t j = 0; j <= i; ++j) {
      const int col = places.of(j, view);
      if (col == Places::kNowhere) {
        continue;
      }
      const double value = equations.A[triangleIndex(i, j)];
      system.JJ2.at<double>(row, col) += value;
      if (i != j) {
        system.JJ2.at<double>(col, row) += value;
      }
    }
    system.ex3.at<double>(row) += equations.b[i];
  }
}

}  // namespace

ReducedSystem reducedNormalEquations(const std::vector<ViewPoints>& views,
                                     const lens::Camera& camera,
                                     const std::vector<lens::Pose>& poses,
                                     const EstimatedIntrinsics& estimated) {
  const Places places(estimated);
  const int unknowns = places.intrinsics() + static_cast<int>(kPose * views.size());
  ReducedSystem system{cv::Mat::zeros(unknowns, unknowns, CV_64F),
                       cv::Mat::zeros(unknowns, 1, CV_64F)};
  for (std::size_t i = 0; i < views.size(); ++i) {
    addView(fullNormalEquations(views[i], camera, poses[i]), i, places, system);
  }
  return system;
}

}  // namespace fisheye_calibration::solver
