#include "lens/inverse_lens.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "lens/camera_model-inl.h"

namespace fisheye_calibration::lens {
namespace {

namespace model = HWY_NAMESPACE;

// Newton's iteration theta <- theta - f(theta)/f'(theta), f = theta + k0 theta^2 + k1 theta^3 -
// theta_d. A step depends on theta alone, so an iteration that returns to an earlier angle cycles
// forever. As millions of steps may be allowed (an epsilon-only criterion allows 2^31 - 1), Brent's
// method detects such a cycle and the remaining whole rounds are skipped; the result is the same.
class AngleIteration {
 public:
  AngleIteration(const Camera& camera, double thetaD) : camera_(camera), thetaD_(thetaD) {}

  // Returns true if a step fell below epsilon.
  bool run(const NewtonCriteria& criteria) {
    double landmark = std::numeric_limits<double>::quiet_NaN();
    int landmarkAge = 0;
    int nextLandmark = 64;
    for (int left = criteria.maxCount; left > 0; --left) {
      const double fix = step();
      if (criteria.useEpsilon && std::abs(fix) < criteria.epsilon) {
        return true;
      }
      ++landmarkAge;
      if (std::isnan(theta_)) {
        return false;
      }
      if (theta_ == landmark) {
        left = (left - 1) % landmarkAge + 1;
      } else if (landmarkAge == nextLandmark) {
        landmark = theta_;
        landmarkAge = 0;
        nextLandmark = std::min(nextLandmark, 1 << 29) * 2;
      }
    }
    return false;
  }

  double theta() const { return theta_; }

 private:
  double step() {
    const double fix = (model::distortedAngle(camera_, theta_) - thetaD_) /
                       model::distortedAngleSlope(camera_, theta_);
    theta_ -= fix;
    return fix;
  }

  const Camera& camera_;
  double thetaD_;
  double theta_ = thetaD_;
};

}  // namespace

bool undistortionScale(const Camera& camera, double thetaD, const NewtonCriteria& criteria,
                       double& scale) {
  // At the centre tan(0)/0 is undefined; with an epsilon the point counts as solved there.
  if (criteria.useEpsilon && !(std::abs(thetaD) > criteria.epsilon)) {
    scale = 0;
    return true;
  }
  AngleIteration iteration(camera, thetaD);
  const bool converged = iteration.run(criteria);
  const double theta = iteration.theta();
  scale = std::tan(theta) / thetaD;
  const bool changedSign = (thetaD < 0 && theta > 0) || (thetaD > 0 && theta < 0);
  return (converged || !criteria.useEpsilon) && !changedSign;
}

}  // namespace fisheye_calibration::lens
