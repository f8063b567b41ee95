#include "records.h"

#define FIELD(type, member, name) \
  { name, offsetof(type, member), sizeof(((type*)0)->member) }
#define RECORD(type, name, fields) \
  { name, sizeof(type), fields, sizeof fields / sizeof *fields }

#define POINT(member, name) FIELD(fcal_point, member, name)
static const field point_fields[] = {
    POINT(id, "Id"),
    POINT(reserved1, "Reserved1"),
    POINT(reserved2, "Reserved2"),
    POINT(xw, "Xw"),
    POINT(yw, "Yw"),
    POINT(reserved3, "Reserved3"),
    POINT(x, "X"),
    POINT(y, "Y"),
    POINT(reproj_x, "ReprojX"),
    POINT(reproj_y, "ReprojY"),
    POINT(error_x, "ErrorX"),
    POINT(error_y, "ErrorY"),
};

#define CAMERA(member, name) FIELD(fcal_camera, member, name)
static const field camera_fields[] = {
    CAMERA(u0, "U0"),
    CAMERA(v0, "V0"),
    CAMERA(fx, "Fx"),
    CAMERA(fy, "Fy"),
    CAMERA(skewness, "Skewness"),
    CAMERA(k[0], "K0"),
    CAMERA(k[1], "K1"),
    CAMERA(k[2], "K2"),
    CAMERA(k[3], "K3"),
    CAMERA(k[4], "K4"),
    CAMERA(k[5], "K5"),
    CAMERA(r[0], "R0"),
    CAMERA(r[1], "R1"),
    CAMERA(r[2], "R2"),
    CAMERA(r[3], "R3"),
    CAMERA(r[4], "R4"),
    CAMERA(r[5], "R5"),
    CAMERA(r[6], "R6"),
    CAMERA(r[7], "R7"),
    CAMERA(r[8], "R8"),
    CAMERA(rx, "Rx"),
    CAMERA(ry, "Ry"),
    CAMERA(rz, "Rz"),
    CAMERA(tx, "Tx"),
    CAMERA(ty, "Ty"),
    CAMERA(tz, "Tz"),
    CAMERA(p[0], "P0"),
    CAMERA(p[1], "P1"),
    CAMERA(p[2], "P2"),
    CAMERA(p[3], "P3"),
    CAMERA(p[4], "P4"),
    CAMERA(p[5], "P5"),
    CAMERA(p[6], "P6"),
    CAMERA(p[7], "P7"),
    CAMERA(p[8], "P8"),
    CAMERA(pixel, "Pixel"),
    CAMERA(datum_xw, "DatumXw"),
    CAMERA(datum_yw, "DatumYw"),
    CAMERA(image_dx, "ImageDx"),
    CAMERA(image_dy, "ImageDy"),
};

#define DUAL(member, name) FIELD(fcal_dual, member, name)
static const field dual_fields[] = {
    DUAL(pixel, "Pixel"),      DUAL(width, "Width"),    DUAL(height, "Height"),
    DUAL(datum_x, "DatumX"),   DUAL(datum_y, "DatumY"), DUAL(datum_xw, "DatumXw"),
    DUAL(datum_yw, "DatumYw"),
};

#define SOLUTION(member, name) FIELD(fcal_solution, member, name)
static const field solution_fields[] = {
    SOLUTION(fx, "Fx"),
    SOLUTION(fy, "Fy"),
    SOLUTION(cx, "Cx"),
    SOLUTION(cy, "Cy"),
    SOLUTION(k0, "K0"),
    SOLUTION(k1, "K1"),
    SOLUTION(alpha, "Alpha"),
    SOLUTION(rotation[0], "RotationX"),
    SOLUTION(rotation[1], "RotationY"),
    SOLUTION(rotation[2], "RotationZ"),
    SOLUTION(translation[0], "TranslationX"),
    SOLUTION(translation[1], "TranslationY"),
    SOLUTION(translation[2], "TranslationZ"),
    SOLUTION(covariance, "covariance"),
};

#define RESULT(member, name) FIELD(fcal_views_result, member, name)
static const field result_fields[] = {
    RESULT(size, "Size"),
    RESULT(outcome, "Outcome"),
    RESULT(refused_view, "RefusedView"),
    RESULT(steps, "Steps"),
    RESULT(rms, "Rms"),
    RESULT(noise_sigma, "NoiseSigma"),
    RESULT(noise_assumed, "NoiseAssumed"),
    RESULT(reserved, "Reserved"),
};

#define OPTION(member, name) FIELD(fcal_views_options, member, name)
static const field options_fields[] = {
    OPTION(size, "Size"),
    OPTION(noise, "Noise"),
    OPTION(no_prior, "NoPrior"),
    OPTION(keep_all, "KeepAll"),
    OPTION(start_focal_factor, "StartFocalFactor"),
    OPTION(held_lens, "HeldLens"),
};

static const field image_fields[] = {
    FIELD(fcal_image, data, "Data"),     FIELD(fcal_image, width, "Width"),
    FIELD(fcal_image, height, "Height"), FIELD(fcal_image, stride, "Stride"),
    FIELD(fcal_image, bits, "Bits"),
};

static const field rig_view_fields[] = {
    FIELD(fcal_rig_view, frame, "Frame"),
    FIELD(fcal_rig_view, camera, "Camera"),
    FIELD(fcal_rig_view, points, "Points"),
    FIELD(fcal_rig_view, count, "Count"),
};

static const field target_view_fields[] = {
    FIELD(fcal_target_view, points, "Points"),
    FIELD(fcal_target_view, count, "Count"),
};

const record point_record = RECORD(fcal_point, "Point", point_fields);
const record camera_record = RECORD(fcal_camera, "Camera", camera_fields);
const record dual_record = RECORD(fcal_dual, "Dual", dual_fields);
const record solution_record = RECORD(fcal_solution, "Solution", solution_fields);
const record result_record = RECORD(fcal_views_result, "ViewsResult", result_fields);
const record options_record = RECORD(fcal_views_options, "NativeViewsOptions", options_fields);
const record image_record = RECORD(fcal_image, "NativeImage", image_fields);
const record rig_view_record = RECORD(fcal_rig_view, "NativeRigView", rig_view_fields);
const record target_view_record = RECORD(fcal_target_view, "NativeTargetView", target_view_fields);
