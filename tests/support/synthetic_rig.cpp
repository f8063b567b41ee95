#include "support/synthetic_rig.h"

#include <cmath>

namespace support {
namespace {

cv::Matx33d turnAbout(int axis, double angle) {
  const int next = (axis + 1) % 3;
  const int last = (axis + 2) % 3;
  cv::Matx33d R = cv::Matx33d::eye();
  R(next, next) = std::cos(angle);
  R(next, last) = -std::sin(angle);
  R(last, next) = std::sin(angle);
  R(last, last) = std::cos(angle);
  return R;
}

// Axis times angle of a rotation by less than a half turn.
cv::Vec3d rotationVectorOf(const cv::Matx33d& R) {
  const cv::Vec3d axis(R(2, 1) - R(1, 2), R(0, 2) - R(2, 0), R(1, 0) - R(0, 1));  // 2 sin a
  const double sine = cv::norm(axis) / 2;
  const double cosine = (R(0, 0) + R(1, 1) + R(2, 2) - 1) / 2;
  return sine == 0 ? cv::Vec3d() : axis * (std::atan2(sine, cosine) / (2 * sine));
}

bool insideSafeCircle(const RigCamera& camera, const RigView& view) {
  const cv::Size size = camera.imageSize;
  const double limit = 0.95 * std::max(size.width, size.height) / 2;
  for (const cv::Point2d& point : view.imagePoints) {
    const double dx = point.x - (size.width * 0.5 - 0.5);
    const double dy = point.y - (size.height * 0.5 - 0.5);
    if (!(std::hypot(dx, dy) < limit)) return false;
  }
  return true;
}

RigCamera randomCamera(Random& random) {
  static const cv::Size sizes[] = {{1280, 960}, {1920, 1208}, {800, 503}, {2592, 1944}};
  RigCamera camera;
  camera.imageSize = sizes[static_cast<int>(random.uniform(0, 4)) % 4];
  const double focal = camera.imageSize.width / CV_PI * random.uniform(0.95, 1.1);
  camera.fx = focal;
  camera.fy = focal * random.uniform(0.99, 1.01);
  camera.cx = camera.imageSize.width * random.uniform(0.49, 0.51);
  camera.cy = camera.imageSize.height * random.uniform(0.49, 0.51);
  camera.k0 = random.uniform(-0.03, 0.03);
  camera.k1 = random.uniform(-0.04, 0.01);
  return camera;
}

}  // namespace

double Random::uniform(double low, double high) {
  const double unit = static_cast<double>(engine_() >> 11) * 0x1p-53;
  return low + (high - low) * unit;
}

// Box and Muller.
double Random::normal(double sigma) {
  const double radius = std::sqrt(-2 * std::log(1 - uniform(0, 1)));
  return sigma * radius * std::cos(2 * CV_PI * uniform(0, 1));
}

cv::Point3d Bed::centre() const {
  return {left + spacing * (columns - 1) / 2, top + spacing * (rows - 1) / 2, 0};
}

std::vector<cv::Point3d> Bed::points() const {
  std::vector<cv::Point3d> grid;
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      grid.emplace_back(left + spacing * column, top + spacing * row, 0);
    }
  }
  return grid;
}

RigPose poseOver(const Bed& bed, double distance, double tiltX, double tiltY, double turn,
                 double offsetX, double offsetY) {
  const cv::Matx33d R = turnAbout(0, tiltX) * turnAbout(1, tiltY) * turnAbout(2, turn);
  const cv::Point3d centre = bed.centre();
  const cv::Vec3d translation =
      cv::Vec3d(offsetX, offsetY, distance) - R * cv::Vec3d(centre.x, centre.y, centre.z);
  return {rotationVectorOf(R), translation};
}

plain::View RigView::plainView() const {
  return {cv::Mat(objectPoints).clone(), cv::Mat(imagePoints).clone()};
}

std::vector<cv::Point3f> RigView::objectPoints32() const {
  return {objectPoints.begin(), objectPoints.end()};
}

std::vector<cv::Point2f> RigView::imagePoints32() const {
  return {imagePoints.begin(), imagePoints.end()};
}

RigView seen(const RigCamera& camera, const Bed& bed, const RigPose& pose, double sigma,
             std::uint64_t seed) {
  RigView view{pose, bed.points(), {}};
  const plain::Pose truth = plainPose(pose);
  const cv::Mat pixels = plain::projectPoints(cv::Mat(view.objectPoints), truth.rvec, truth.tvec,
                                              plainIntrinsics(camera));
  Random random(seed);
  for (int i = 0; i < pixels.rows; ++i) {
    const cv::Vec2d pixel = pixels.at<cv::Vec2d>(i);
    const double noiseX = random.normal(sigma);
    const double noiseY = random.normal(sigma);
    view.imagePoints.emplace_back(pixel[0] + noiseX, pixel[1] + noiseY);
  }
  return view;
}

RigView rounded(RigView view) {
  for (cv::Point3d& point : view.objectPoints) point = cv::Point3d(cv::Point3f(point));
  for (cv::Point2d& point : view.imagePoints) point = cv::Point2d(cv::Point2f(point));
  return view;
}

std::vector<CalibrationPoint> calibrationPoints(const RigView& view) {
  std::vector<CalibrationPoint> points;
  for (size_t i = 0; i < view.objectPoints.size(); ++i) {
    CalibrationPoint point{};
    point.PointId = static_cast<std::int32_t>(i + 1);
    point.Xw = static_cast<float>(view.objectPoints[i].x);
    point.Yw = static_cast<float>(view.objectPoints[i].y);
    point.ImagePtX = static_cast<float>(view.imagePoints[i].x);
    point.ImagePtY = static_cast<float>(view.imagePoints[i].y);
    points.push_back(point);
  }
  return points;
}

std::vector<plain::View> Rig::plainViews() const {
  std::vector<plain::View> all;
  for (const RigView& view : views) all.push_back(view.plainView());
  return all;
}

Rig randomRig(std::uint64_t seed, int viewCount, double sigma) {
  Random random(seed);
  Rig rig;
  rig.camera = randomCamera(random);
  rig.bed.columns = 8 + static_cast<int>(random.uniform(0, 4));
  rig.bed.rows = 6 + static_cast<int>(random.uniform(0, 3));
  const double size = rig.bed.spacing * (rig.bed.columns - 1);
  while (static_cast<int>(rig.views.size()) < viewCount) {
    const double side = random.uniform(-1, 1) < 0 ? -1 : 1;
    // One statement each: compilers evaluate arguments in different orders.
    const double offsetY = size * random.uniform(-0.1, 0.1);
    const double offsetX = size * random.uniform(-0.1, 0.1);
    const double turn = random.uniform(-0.6, 0.6);
    const double tiltY = -side * random.uniform(0.2, 0.5);
    const double tiltX = side * random.uniform(0.25, 0.6);
    const double distance = size * random.uniform(0.35, 0.6);
    const RigPose pose = poseOver(rig.bed, distance, tiltX, tiltY, turn, offsetX, offsetY);
    const auto noiseSeed = static_cast<std::uint64_t>(random.uniform(1, 1e15));
    const RigView view = seen(rig.camera, rig.bed, pose, sigma, noiseSeed);
    if (insideSafeCircle(rig.camera, view)) rig.views.push_back(view);
  }
  return rig;
}

plain::Intrinsics plainIntrinsics(const RigCamera& camera) {
  plain::Intrinsics intrinsics;
  intrinsics.focalX = camera.fx;
  intrinsics.focalY = camera.fy;
  intrinsics.principalX = camera.cx;
  intrinsics.principalY = camera.cy;
  intrinsics.skew = camera.skew;
  intrinsics.k0 = camera.k0;
  intrinsics.k1 = camera.k1;
  intrinsics.estimated = {true, true, true, true, false, true, true};
  return intrinsics;
}

plain::Pose plainPose(const RigPose& pose) {
  return {cv::Mat(pose.rotation).clone(), cv::Mat(pose.translation).clone()};
}

}  // namespace support
