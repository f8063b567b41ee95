// The layout of the C interface's records, which never changes, and that the first three are the
// records of fisheye_calibration.h.
#include <cstddef>
#include <cstdint>

#include "fisheye_calibration.h"
#include "fisheye_calibration_c.h"

namespace {

// NOLINTBEGIN(bugprone-macro-parentheses): records are types
#define SAME_FIELD(c_record, c_field, record, field)                      \
  static_assert(offsetof(c_record, c_field) == offsetof(record, field) && \
                    sizeof(static_cast<c_record*>(nullptr)->c_field) ==   \
                        sizeof(static_cast<record*>(nullptr)->field),     \
                #c_record "." #c_field " is not " #record "::" #field)
// NOLINTEND(bugprone-macro-parentheses)
#define SAME_POINT(c_field, field) SAME_FIELD(fcal_point, c_field, CalibrationPoint, field)
#define SAME_CAMERA(c_field, field) SAME_FIELD(fcal_camera, c_field, FishEyeCalibrationParam, field)
#define SAME_DUAL(c_field, field) SAME_FIELD(fcal_dual, c_field, DualFishEyeCalibrationParam, field)
#define AT(record, field, bytes) \
  static_assert(offsetof(record, field) == (bytes), #record "." #field " has moved")

static_assert(sizeof(fcal_point) == sizeof(CalibrationPoint));
static_assert(alignof(fcal_point) == alignof(CalibrationPoint));
SAME_POINT(id, PointId);
SAME_POINT(reserved1, Reserved1);
SAME_POINT(reserved2, Reserved2);
SAME_POINT(xw, Xw);
SAME_POINT(yw, Yw);
SAME_POINT(reserved3, Reserved3);
SAME_POINT(x, ImagePtX);
SAME_POINT(y, ImagePtY);
SAME_POINT(reproj_x, ReprojPtX);
SAME_POINT(reproj_y, ReprojPtY);
SAME_POINT(error_x, ReprojErrX);
SAME_POINT(error_y, ReprojErrY);

static_assert(sizeof(fcal_camera) == sizeof(FishEyeCalibrationParam));
static_assert(alignof(fcal_camera) == alignof(FishEyeCalibrationParam));
SAME_CAMERA(u0, u0);
SAME_CAMERA(v0, v0);
SAME_CAMERA(fx, fx);
SAME_CAMERA(fy, fy);
SAME_CAMERA(skewness, skewness);
SAME_CAMERA(k[0], k0);
SAME_CAMERA(k[1], k1);
SAME_CAMERA(k[2], k2);
SAME_CAMERA(k[3], k3);
SAME_CAMERA(k[4], k4);
SAME_CAMERA(k[5], k5);
SAME_CAMERA(r[0], R1);
SAME_CAMERA(r[1], R2);
SAME_CAMERA(r[2], R3);
SAME_CAMERA(r[3], R4);
SAME_CAMERA(r[4], R5);
SAME_CAMERA(r[5], R6);
SAME_CAMERA(r[6], R7);
SAME_CAMERA(r[7], R8);
SAME_CAMERA(r[8], R9);
SAME_CAMERA(rx, Rx);
SAME_CAMERA(ry, Ry);
SAME_CAMERA(rz, Rz);
SAME_CAMERA(tx, Tx);
SAME_CAMERA(ty, Ty);
SAME_CAMERA(tz, Tz);
SAME_CAMERA(p[0], p1);
SAME_CAMERA(p[1], p2);
SAME_CAMERA(p[2], p3);
SAME_CAMERA(p[3], p4);
SAME_CAMERA(p[4], p5);
SAME_CAMERA(p[5], p6);
SAME_CAMERA(p[6], p7);
SAME_CAMERA(p[7], p8);
SAME_CAMERA(p[8], p9);
SAME_CAMERA(pixel, Pixel);
SAME_CAMERA(datum_xw, DatumPtXw);
SAME_CAMERA(datum_yw, DatumPtYw);
SAME_CAMERA(image_dx, ImageDx);
SAME_CAMERA(image_dy, ImageDy);

static_assert(sizeof(fcal_dual) == sizeof(DualFishEyeCalibrationParam));
static_assert(alignof(fcal_dual) == alignof(DualFishEyeCalibrationParam));
SAME_DUAL(pixel, Pixel);
SAME_DUAL(width, StdImageWidth);
SAME_DUAL(height, StdImageHeight);
SAME_DUAL(datum_x, DatumImagePtX);
SAME_DUAL(datum_y, DatumImagePtY);
SAME_DUAL(datum_xw, DatumPtXw);
SAME_DUAL(datum_yw, DatumPtYw);

#if UINTPTR_MAX == UINT64_MAX  // the other records hold pointers
static_assert(sizeof(fcal_image) == 24);
AT(fcal_image, data, 0);
AT(fcal_image, width, 8);
AT(fcal_image, height, 12);
AT(fcal_image, stride, 16);
AT(fcal_image, bits, 20);
static_assert(sizeof(fcal_rig_view) == 48);
AT(fcal_rig_view, frame, 0);
AT(fcal_rig_view, camera, 24);
AT(fcal_rig_view, points, 32);
AT(fcal_rig_view, count, 40);
static_assert(sizeof(fcal_target_view) == 16);
AT(fcal_target_view, points, 0);
AT(fcal_target_view, count, 8);
static_assert(sizeof(fcal_solution) == 1256);
AT(fcal_solution, fx, 0);
AT(fcal_solution, fy, 8);
AT(fcal_solution, cx, 16);
AT(fcal_solution, cy, 24);
AT(fcal_solution, k0, 32);
AT(fcal_solution, k1, 40);
AT(fcal_solution, alpha, 48);
AT(fcal_solution, rotation, 56);
AT(fcal_solution, translation, 80);
AT(fcal_solution, covariance, 104);
AT(fcal_views_options, size, 0);
AT(fcal_views_options, noise, 4);
AT(fcal_views_options, no_prior, 8);
AT(fcal_views_options, keep_all, 12);
AT(fcal_views_options, start_focal_factor, 16);
AT(fcal_views_options, held_lens, 24);
AT(fcal_views_result, size, 0);
AT(fcal_views_result, outcome, 4);
AT(fcal_views_result, refused_view, 8);
AT(fcal_views_result, steps, 12);
AT(fcal_views_result, rms, 16);
AT(fcal_views_result, noise_sigma, 24);
AT(fcal_views_result, noise_assumed, 32);
AT(fcal_views_result, reserved, 36);
#endif

}  // namespace
