// fisheye_calibration for C and for every language that calls C: C#, Delphi, LabVIEW, Python, and
// C++ of any compiler and run-time. It offers the operations of fisheye_calibration.h and the
// calibration of several views. The library is the same; each interface works without the other.
// C99 or C++98 and <stdint.h> suffice. docs/c-interface.md shows how to use it;
// fisheye_calibration.hpp wraps it for C++17. `compatibility N` refers to docs/compatibility.md.
//
// Stability
//   What is declared here never changes: no function, no field of a record, no value of a constant.
//   Functions, constants and, at the end of records that begin with a `size`, fields may be added.
//
// Calls
//   Every function but fcal_version, fcal_last_error and fcal_status_text returns a status; a
//   status that is not listed below is a failure, too. No exception leaves a function, no message
//   is shown, no memory is handed over: the caller owns every buffer, and the library keeps no
//   pointer after a call. Functions have the platform's C calling convention (cdecl), need no
//   initialisation, and return when their work is done; OpenCV may use threads of its own
//   meanwhile. Calls keep no state but the last error of each thread: any thread may call, and
//   calls may run concurrently if none writes what another one reads or writes. Data without a
//   result may divide by zero or overflow on the way: a host that unmasks floating-point
//   exceptions, as some Delphi programs do, must mask them during calls. Except for fcal_straighten
//   and the parameter files named by the caller they read and write no file, in particular none of
//   the debug files on drive D: of the C++ functions (compatibility 56).
//
// Arguments
//   A pointer must not be null unless its description says that it may; a null array is accepted
//   with a count of 0, and with that functions that map points do nothing and return FCAL_OK. A
//   null pointer, a negative count or any other value outside the range given is FCAL_BAD_ARGUMENT.
//   Numbers in records and arrays of points may be NaN, infinite or 0; the formulas are then
//   evaluated as they stand. Pointers to records and numbers are aligned as C aligns them; pixels
//   and bytes may be anywhere. Outputs need no value before the call. They must not overlap inputs
//   or each other unless a description says so. A call that does not return FCAL_OK writes nothing
//   unless its description says so.
//
// Arrays
//   Coordinates are interleaved: "xy" arrays hold x0, y0, x1, y1 ..., 2 count numbers; "xyz"
//   arrays 3 count. An output of unknown length is an array, its capacity in elements, and a
//   pointer that receives the number of elements needed. If that exceeds the capacity, no element
//   is written; the call then returns FCAL_OK if the capacity is 0, so that a first call can ask
//   for the number, and FCAL_BAD_ARGUMENT otherwise. The number is written in either case. With two
//   such outputs, FCAL_OK needs both to fit or both capacities to be 0.
//
// Records that grow
//   Records that begin with a `size` get new fields at their end. The caller sets `size` to the
//   sizeof of the record as compiled, and in options every other field to 0 for the default.
//   The library takes fields beyond an older record's size as 0 and fills no field beyond it. Of a
//   newer record, options it does not know must be 0, otherwise they are FCAL_BAD_ARGUMENT; results
//   it does not know become 0. A size below that of the first version or above 4096 is
//   FCAL_BAD_ARGUMENT.
//
// Frames (drawn in docs/conventions.md)
//   world            the work bed, plane Z = 0, in the host's unit of length, usually millimetres:
//                    that of the target points
//   raw image        the camera's own, distorted pixels
//   corrected image  the ideal pinhole image with the camera's focal lengths, its principal point
//                    in the middle
//   view             the corrected image turned into a grid on the bed, axis-aligned, `pixel` world
//                    units per pixel; fisheye_calibration.h calls it the second-corrected image
//   The origin of pixel coordinates is the centre of the top-left pixel; x points right and y down.
//   Angles are in radians.
#ifndef FISHEYE_CALIBRATION_C_H
#define FISHEYE_CALIBRATION_C_H

#include <stdint.h>  // NOLINT(modernize-deprecated-headers): C

#if defined(FISHEYE_CALIBRATION_STATIC)
#define FCAL_API
#elif defined(_WIN32)
#if defined(FISHEYE_CALIBRATION_BUILDING)
#define FCAL_API __declspec(dllexport)
#else
#define FCAL_API __declspec(dllimport)
#endif
#else
#define FCAL_API __attribute__((visibility("default")))
#endif

#if defined(_MSC_VER) || defined(__BORLANDC__)
#pragma pack(push, 8)  // whatever the host's default is
#endif

#ifdef __cplusplus
extern "C" {
#endif

// NOLINTBEGIN(modernize-use-using, readability-identifier-naming): C

// ---------------------------------------------------------------------------------------------
// Status
// ---------------------------------------------------------------------------------------------

typedef int32_t fcal_status;
enum {
  FCAL_OK = 0,     // everything was filled
  FCAL_FALSE = 1,  // well-formed arguments that have no result, such as too few points: where
                   // the C++ function returns false
  FCAL_BAD_ARGUMENT = 2,   // null, negative, too small ...; fcal_last_error names the argument
  FCAL_NO_MEMORY = 3,      // or an intermediate image of more than 2^31 - 1 bytes
  FCAL_IMAGE_LIBRARY = 4,  // OpenCV refused the data
  FCAL_OTHER = 5           // anything else
};

// The version of the library, such as "0.1.0".
FCAL_API const char* fcal_version(void);

// What went wrong in this thread's latest call of a function that returns a status: English text of
// at most 511 bytes and a 0 byte, in UTF-8, empty if that call returned FCAL_OK or there was none.
// Never null. The library owns the text, which the thread's next such call overwrites: copy it, and
// do not free it. The texts of fcal_version and fcal_status_text stay.
FCAL_API const char* fcal_last_error(void);

// A few words about a status, such as "bad argument"; never null.
FCAL_API const char* fcal_status_text(fcal_status status);

// ---------------------------------------------------------------------------------------------
// Records. Plain memory with natural alignment: every field at a multiple of its own size, records
// in arrays without gaps. The first three have the layout of CalibrationPoint,
// FishEyeCalibrationParam and DualFishEyeCalibrationParam. Sizes in 64-bit processes, in bytes:
//
//   fcal_point    64     fcal_image        24     fcal_solution       1256
//   fcal_camera  232     fcal_rig_view     48     fcal_views_options    32
//   fcal_dual     28     fcal_target_view  16     fcal_views_result     40
//
// Unused are the four bytes after `skewness`, `tz` and `image_dy` of fcal_camera and after `count`
// of fcal_rig_view and fcal_target_view.
// ---------------------------------------------------------------------------------------------

// One point of the planar calibration target.
typedef struct fcal_point {
  int32_t id;         // number on the target, from 1; identifies the point in both cameras
  int32_t reserved1;  // never interpreted; survive every call (compatibility 4)
  int32_t reserved2;
  float xw;  // on the work plane, world units
  float yw;
  int32_t reserved3;
  float x;  // measured in the raw image, pixels
  float y;
  double reproj_x;  // outputs: the point projected with the solved camera, pixels
  double reproj_y;
  double error_x;  // x - reproj_x, y - reproj_y (computed in 32-bit float), pixels
  double error_y;
} fcal_point;

// One calibrated camera and its work plane.
typedef struct fcal_camera {
  float u0;  // principal point, pixels of the raw image
  float v0;
  float fx;  // focal lengths, pixels
  float fy;
  float skewness;  // 0 in solved cameras; K(0,1), and also the skew argument of the projection
  double k[6];     // k[0], k[1]: distortion, theta_d = theta + k[0] theta^2 + k[1] theta^3; the
                   // others have no meaning
  float r[9];      // rotation from the world frame to the camera frame, row by row
  float rx;  // the same as a rotation vector, radians; only this one is read (compatibility 25)
  float ry;
  float rz;
  float tx;  // translation from the world frame to the camera frame, world units
  float ty;
  float tz;
  double p[9];     // homography from the corrected image to the view, row by row
  float pixel;     // world units per pixel of the view
  float datum_xw;  // world point at the view's centre
  float datum_yw;
  float image_dx;  // shift added after the homography, pixels
  float image_dy;
} fcal_camera;

// Scale, size and datum of a stitched image.
typedef struct fcal_dual {
  float pixel;    // world units per pixel
  int32_t width;  // size of the stitched image, pixels
  int32_t height;
  int32_t datum_x;  // pixel of the datum point; datum_y counts rows from the bottom of the picture
  int32_t datum_y;  // (compatibility 29)
  float datum_xw;   // world coordinates of the datum point
  float datum_yw;
} fcal_dual;

// A picture in the caller's memory. `data` is the first byte of its top row, and `stride` the
// distance in bytes from a row to the one below. A buffer that begins with the bottom row, such as
// those of the C++ functions and of Windows bitmaps, therefore has a negative stride, and `data` is
// its last row:
//
//   top-down   {buffer, width, height, row, bits}
//   bottom-up  {buffer + (height - 1) * row, width, height, -row, bits}
//
// This is the convention of .NET's BitmapData (Scan0, Stride). |stride| is at least width x bits/8;
// what lies between rows is neither read nor written. A stride of 0 means top-down without padding;
// Windows bitmaps pad their rows to multiples of 4 bytes and need their stride given.
// From the first byte to the last one, a picture has at most 2^31 - 1 bytes. Pictures that a
// function only reads are passed as const; their pixels are not written.
typedef struct fcal_image {
  uint8_t* data;
  int32_t width;  // pixels, at least 1
  int32_t height;
  int32_t stride;  // bytes
  int32_t bits;    // per pixel: 8 (grey), 24 or 32; the order of a pixel's bytes is the caller's
} fcal_image;

// One camera of a pair: its frame, record and target points, of which id, xw and yw are read. An id
// above the number of points of both cameras together is not taken for that of a common point.
typedef struct fcal_rig_view {
  fcal_image frame;
  const fcal_camera* camera;
  const fcal_point* points;
  int32_t count;
} fcal_rig_view;

// ---------------------------------------------------------------------------------------------
// Calibration from one view
// ---------------------------------------------------------------------------------------------

// SingleCamCalibration: calibrates a camera from one view of a planar target.
//
//   width, height  size of the raw image, pixels, at least 1
//   points, count  at least 9, in any order; xw, yw, x and y are read. Of every element
//                  reproj_x ... error_y are written. The first and last points fix the scale
//                  `pixel` (compatibility 16): choose them far apart.
//   corrected_width, corrected_height
//                  size of the view that will be rendered later, pixels, at least 1
//   camera         filled field by field; k[2] ... k[5] become 0
//   rms            sqrt(sum(dx^2 + dy^2)/count), pixels
//
// FCAL_FALSE for fewer than 9 points, with nothing written, and if no second correction is found:
// then the fields of `camera` before p, the points and `rms` are written (compatibility 17).
// FCAL_IMAGE_LIBRARY for some points that determine no camera, such as points on a line or in one
// place.
// FCAL_OK promises no good fit: check `rms`. fcal_calibrate_views does not need such care.
FCAL_API fcal_status fcal_calibrate(int32_t width, int32_t height, fcal_point* points,
                                    int32_t count, int32_t corrected_width,
                                    int32_t corrected_height, fcal_camera* camera, double* rms);

// ---------------------------------------------------------------------------------------------
// Parameter files (INI): those of the C++ functions. Paths end in a 0 byte. On Windows they are
// UTF-8, unlike those of the C++ functions, and have at most 259 characters; one that is not UTF-8
// is no file. There a bare name such as "camera.ini" means a file in the Windows folder: use full
// paths, or ".\\camera.ini" for the working directory. Elsewhere paths are the system's bytes,
// usually UTF-8, too.
// ---------------------------------------------------------------------------------------------

// SaveCalibrationParam: writes the section [CalibraionParam] of the file, which is created if it is
// missing; other sections and lines stay. float fields have six decimals, double fields fifteen.
// Unlike the C++ function, FCAL_FALSE if the file cannot be written, for example because its folder
// is missing; the disk is then unchanged.
FCAL_API fcal_status fcal_save_camera(const char* path, const fcal_camera* camera);

// LoadCalibrationParam: missing fields are 0; k is read in the precision of float (compatibility
// 9). Unlike the C++ function, FCAL_FALSE if the file holds no field at all, for example because it
// is missing; all fields are then 0.
FCAL_API fcal_status fcal_load_camera(const char* path, fcal_camera* camera);

// SaveDualCamerasCalibrationParam and LoadDualCamerasCalibrationParam likewise. The datum's world
// coordinates are read back as whole numbers (compatibility 10).
FCAL_API fcal_status fcal_save_dual(const char* path, const fcal_dual* dual);
FCAL_API fcal_status fcal_load_dual(const char* path, fcal_dual* dual);

// ---------------------------------------------------------------------------------------------
// Pictures
// ---------------------------------------------------------------------------------------------

// SingleCamCorrected: renders the view of a raw frame, the same pixels for every stride.
//
//   frame   the raw frame, of the size given to fcal_calibrate
//   camera  its record
//   view    receives the picture; same bits as `frame`, of the size given to fcal_calibrate,
//           fcal_camera_of_solution or fcal_place_view. Any other size is accepted, but the
//           picture is then distorted and no mapping of points holds for it. fcal_crop gives a
//           smaller picture, fcal_place_view another part of the bed.
//   mask    null, or 8 bits and the size of `view`: receives 0 where the pixel shows image content
//           and 255 elsewhere (compatibility 30)
//
// View and mask may overlap the frame, but not each other. FCAL_FALSE for a frame that is entirely
// black once the distortion is removed (compatibility 34). A singular homography gives an empty
// picture, mask 255, and FCAL_OK (compatibility 35).
FCAL_API fcal_status fcal_correct(const fcal_image* frame, const fcal_camera* camera,
                                  const fcal_image* view, const fcal_image* mask);

// CroppingImage: copies the centred rectangle of the target's size. Pixels of the target without a
// source keep their value. Same bits. With a source of s columns or rows and a target of t, it
// leaves out (s + 1)/2 - (t + 1)/2 columns on the left and as many rows at the bottom, rounded down
// (compatibility 41).
FCAL_API fcal_status fcal_crop(const fcal_image* source, const fcal_image* target);

// ---------------------------------------------------------------------------------------------
// Mapping of points. (cx, cy) is half the width and height of the corrected image or view, pixels:
// (width/2, height/2), not rounded.
// ---------------------------------------------------------------------------------------------

// WorldToRawImagePoint for `count` points X, by the fisheye model: Y = R X + T, r = |(Y1, Y2)/Y3|,
// theta = atan r, theta_d = theta + k[0] theta^2 + k[1] theta^3,
// pixel = [fx skewness u0; 0 fy v0] ((theta_d/r) (Y1, Y2)/Y3, 1). R is taken from (rx, ry, rz). A
// depth Y3 of 0 counts as 1, and points behind the camera are not rejected (compatibility 26).
FCAL_API fcal_status fcal_world_to_raw(const fcal_camera* camera, const float* world_xyz,
                                       int32_t count, float* raw_xy);

// WorldToCorrectedImagePoint: the same pose without distortion, principal point at (cx, cy).
FCAL_API fcal_status fcal_world_to_corrected(const fcal_camera* camera, float cx, float cy,
                                             const float* world_xyz, int32_t count,
                                             float* corrected_xy);

// WorldToSecondCorrectedImagePoint, for points on the work plane: x = (xw - datum_xw)/pixel + cx, y
// likewise, in 32-bit float.
FCAL_API fcal_status fcal_world_to_view(const fcal_camera* camera, float cx, float cy,
                                        const float* world_xy, int32_t count, float* view_xy);

// CorrectedImageToWorldPoint, the inverse: it takes points of the view despite its name
// (compatibility 24).
FCAL_API fcal_status fcal_view_to_world(const fcal_camera* camera, float cx, float cy,
                                        const float* view_xy, int32_t count, float* world_xy);

// The inverse of fcal_world_to_raw on the work plane (Zw = 0), computed in double precision. The
// C++ function RawImageToWorldPoint computes nothing (compatibility 23); this one does. NaN for a
// pixel that does not show the plane: beyond the lens's range or above the horizon.
FCAL_API fcal_status fcal_raw_to_world(const fcal_camera* camera, const float* raw_xy,
                                       int32_t count, float* world_xy);

// From the raw to the corrected image, computed in double precision, where the C++ function
// RawImageToCorrectedImagePoint computes nothing (compatibility 23). NaN beyond the lens's range.
FCAL_API fcal_status fcal_raw_to_corrected(const fcal_camera* camera, float cx, float cy,
                                           const float* raw_xy, int32_t count, float* corrected_xy);

// ---------------------------------------------------------------------------------------------
// Plane registration
// ---------------------------------------------------------------------------------------------

// HandEyeCalibration: the least-squares affine map from (x, y) of the points to their (xw, yw):
// xw = a x + b y + e, yw = c x + d y + f.
//
//   coefficients  receives six numbers: a, b, c, d, e, f
//   error_x, error_y  sqrt(s/count), world units; s sums the squared residuals of the first nine
//                 points only (compatibility 42)
//
// FCAL_FALSE for fewer than three points. Collinear points are not reported (compatibility 43).
FCAL_API fcal_status fcal_fit_affine(const fcal_point* points, int32_t count,
                                     double coefficients[6], double* error_x, double* error_y);

// GetPerspectiveTransformationParam, a setup aid and the one function with files of fixed names and
// a window: reads "D:/CorrectedImage.bmp", straightens it by exactly four points, shows it until a
// key is pressed or the window is closed, and writes "D:/CorrectedImage2.bmp". Of the points xw,
// yw, x and y are read; the first and last form a diagonal. Call it on a thread that may own
// windows. FCAL_FALSE for no points, FCAL_IMAGE_LIBRARY for any other number than four, a missing
// picture, or if no window can be opened.
FCAL_API fcal_status fcal_straighten(const fcal_point* points, int32_t count);

// ---------------------------------------------------------------------------------------------
// Two cameras
// ---------------------------------------------------------------------------------------------

// GetCommonPoints: the points whose id occurs exactly twice in the two lists together, by ascending
// id, copied whole; ids outside 1...id_count are skipped, so an id_count below 1 finds none. An id
// that occurs twice in one list counts, too (compatibility 46), so the two outputs may differ in
// length; the capacities `count1` and `count2` always suffice.
FCAL_API fcal_status fcal_common_points(const fcal_point* points1, int32_t count1,
                                        const fcal_point* points2, int32_t count2, int32_t id_count,
                                        fcal_point* common1, int32_t capacity1, int32_t* needed1,
                                        fcal_point* common2, int32_t capacity2, int32_t* needed2);

// ComputeStitchedImageSize: width and height, multiples of 4, of the canvas that fcal_stitch needs.
// World coordinates are expected within 0...10000 (compatibility 48). The frames' pixels are not
// read and their data may be null; their other fields must be those of pictures. FCAL_FALSE if the
// lists share no point or do not pair. FCAL_NO_MEMORY if a view of twice the frame's size takes
// more than 2^31 - 1 bytes.
FCAL_API fcal_status fcal_stitched_size(const fcal_rig_view* first, const fcal_rig_view* second,
                                        int32_t* width, int32_t* height);

// FishEyeImageStitching: corrects both frames at twice their size, aligns the second one to the
// first, blends them into `canvas` and fills `dual`. Each record must be made for a view of twice
// its frame's size: corrected_width = 2 x width and corrected_height = 2 x height in
// fcal_calibrate or fcal_camera_of_solution, or that size in fcal_place_view. This cannot be
// checked: with other records the call succeeds, but the content is many pixels away from where
// fcal_world_to_stitched puts it. Canvas and frames have the same bits. Canvas pixels
// that neither camera covers keep their value (compatibility 53): fill the canvas before. A frame
// that fcal_correct refuses covers nothing. The canvas may overlap the frames. FCAL_FALSE and
// FCAL_NO_MEMORY as fcal_stitched_size.
FCAL_API fcal_status fcal_stitch(const fcal_rig_view* first, const fcal_rig_view* second,
                                 const fcal_image* canvas, fcal_dual* dual);

// DualCam_CroppingImage: copies the rectangle of the target's size whose top-left picture pixel is
// (left, top), and updates `dual`, the record of the source, to match. The target's width and
// height are multiples of 4, otherwise FCAL_BAD_ARGUMENT. Pixels without a source, such as those of
// a negative `left`, keep their value. Same bits.
FCAL_API fcal_status fcal_crop_stitched(const fcal_image* source, int32_t left, int32_t top,
                                        const fcal_image* target, fcal_dual* dual);

// DualCam_WorldToSecondCorrectedImagePoint: u = (xw - datum_xw)/pixel + datum_x, v likewise, in
// 32-bit float. The point is in picture row v + height - 2 datum_y, counted from the top, which is
// v unless the picture has been cropped (compatibility 29, drawn in docs/conventions.md).
FCAL_API fcal_status fcal_world_to_stitched(const fcal_dual* dual, const float* world_xy,
                                            int32_t count, float* stitched_uv);

// DualCam_CorrectedImageToWorldPoint, the inverse. FCAL_OK, though the C++ function always returns
// false (compatibility 28).
FCAL_API fcal_status fcal_stitched_to_world(const fcal_dual* dual, const float* stitched_uv,
                                            int32_t count, float* world_xy);

// ---------------------------------------------------------------------------------------------
// Calibration from any number of views, with the uncertainty of the result (docs/accuracy.md)
// ---------------------------------------------------------------------------------------------

// One view of the target: xw, yw, x and y of its points are read. Views may have different counts.
typedef struct fcal_target_view {
  const fcal_point* points;
  int32_t count;
} fcal_target_view;

// A lens, the pose of one view's target, and their uncertainty, in double precision.
typedef struct fcal_solution {
  double fx;  // focal lengths, principal point (pixels), distortion, skew argument
  double fy;
  double cx;
  double cy;
  double k0;
  double k1;
  double alpha;
  double rotation[3];      // vector, radians, from the world frame to the camera frame
  double translation[3];   // world units
  double covariance[144];  // 12 x 12, symmetric, in products of their units, of fx, fy, cx, cy, k0,
                           // k1, rotation, translation; NaN for a view that was left out
} fcal_solution;

enum {                    // fcal_views_options.noise
  FCAL_NOISE_SMOOTH = 0,  // errors of neighbouring points are alike: lens, flatness, printing
  FCAL_NOISE_WHITE = 1    // errors of all points are independent
};

typedef struct fcal_views_options {
  int32_t size;      // sizeof(fcal_views_options)
  int32_t noise;     // FCAL_NOISE_...
  int32_t no_prior;  // not 0: nothing is assumed about the lens; one view may leave it far off
  int32_t keep_all;  // not 0: wrong points and views are listed but used all the same
  // The solver starts from this multiple of the focal length max(width, height)/pi; 0 counts as 1,
  // a negative or not finite number is FCAL_BAD_ARGUMENT.
  double start_focal_factor;
  // Not null: the lens is known, only the poses are solved. Its alpha is kept; the part of its
  // covariance that concerns the lens (0: exact) enters the result.
  const fcal_solution* held_lens;
} fcal_views_options;

enum {  // fcal_views_result.outcome
  FCAL_SOLVED = 0,
  FCAL_BAD_INPUT = 1,       // no view, numbers that are not finite, a held lens that is none
  FCAL_TOO_FEW_POINTS = 2,  // fewer than four in a view, or seven in a single one
  FCAL_DEGENERATE = 3,      // a view's points do not determine its pose, or the views the lens
  FCAL_NOT_CONVERGED = 4,
  FCAL_BEHIND_CAMERA = 5,          // the best solution has a point beyond 90 degrees
  FCAL_FOLDED_LENS = 6,            // or beyond the angle up to which the lens is one to one
  FCAL_TOO_MANY_WRONG_POINTS = 7,  // more than a fifth of a view's points contradict the rest
  FCAL_TOO_MANY_WRONG_VIEWS = 8    // more than a fifth of the views contradict the rest
};

typedef struct fcal_views_result {
  int32_t size;           // sizeof(fcal_views_result)
  int32_t outcome;        // FCAL_SOLVED ...
  int32_t refused_view;   // the view that the outcome is about, from 0, or -1
  int32_t steps;          // of the iteration
  double rms;             // reprojection error of the points in use, pixels
  double noise_sigma;     // standard deviation of a measured coordinate by the chosen noise model,
                          // pixels; for smooth noise larger than the residuals show
  int32_t noise_assumed;  // 1: too few points to estimate noise_sigma; it is at least 0.5
  int32_t reserved;       // 0
} fcal_views_result;

// Calibrates a camera from any number of views of flat targets, all together, by weighted least
// squares with weak assumptions about fisheye lenses. Points and views that contradict the others
// are found and left out. The same input gives the same result.
//
//   width, height      size of the raw image, pixels, at least 1
//   views, view_count  each view has a pose of its own; 0 views have no solution
//   options            null for the defaults
//   result             its `size` must be set
//   solutions          view_count elements, one per view: the common lens, the view's pose and the
//                      covariance; null if not wanted
//   wrong_points       one byte per point of all views, view by view, as many as the counts' sum:
//                      receives 1 for a point that was found wrong, otherwise 0; null if not wanted
//   wrong_views        view_count bytes likewise; null if not wanted
//
// FCAL_FALSE if there is no solution: `outcome` and `refused_view` say why, the other fields of
// `result` are 0, wrong_points and wrong_views are written, and solutions are not.
FCAL_API fcal_status fcal_calibrate_views(int32_t width, int32_t height,
                                          const fcal_target_view* views, int32_t view_count,
                                          const fcal_views_options* options,
                                          fcal_views_result* result, fcal_solution* solutions,
                                          uint8_t* wrong_points, uint8_t* wrong_views);

// The record of a solution whose target lies on the work bed, in the steps after the solver of
// fcal_calibrate, with the same arguments and results. The solution's alpha must be 0: records
// hold no other camera. FCAL_FALSE for fewer than 4 points, with nothing written, and if no second
// correction is found, as there.
FCAL_API fcal_status fcal_camera_of_solution(const fcal_solution* solution, fcal_point* points,
                                             int32_t count, int32_t corrected_width,
                                             int32_t corrected_height, fcal_camera* camera,
                                             double* rms);

// The solution that a record holds, with a covariance of 0.
FCAL_API fcal_status fcal_solution_of_camera(const fcal_camera* camera, fcal_solution* solution);

// Changes the second correction of a record so that the view of width x height pixels shows a
// chosen rectangle of the bed: from (corner_xw, corner_yw), the outer corner of its top-left pixel,
// with `pixel` world units per pixel, more than 0. The record's p ... image_dy are written, the
// others read. FCAL_FALSE if the camera sees the bed edge-on or a number would not be finite; the
// record is then unchanged.
FCAL_API fcal_status fcal_place_view(double corner_xw, double corner_yw, float pixel, int32_t width,
                                     int32_t height, fcal_camera* camera);

// The bed points (Z = 0), world units, that raw pixels show; NaN for a pixel that does not show the
// bed.
FCAL_API fcal_status fcal_raw_to_bed(const fcal_solution* solution, const double* raw_xy,
                                     int32_t count, double* bed_xy);

// A bound on the error on the bed at each of the points, for example a grid: 2.5 standard
// deviations of the bed point that a pixel shows, world units. `bounds` receives `count` numbers.
// NaN where the camera does not see the point, and everywhere if the covariance is not finite.
FCAL_API fcal_status fcal_bed_bounds(const fcal_solution* solution, const double* bed_xy,
                                     int32_t count, double* bounds);

// The same for another camera, `judged`, such as that of a simpler calibration: with g' the bed
// point that `solution` gives to the pixel at which `judged` sees g, sqrt(|g' - g|^2 + bound^2).
// The covariance of `judged` is not read. NaN where either camera does not see the point, and
// everywhere if the covariance of `solution` is not finite.
FCAL_API fcal_status fcal_bed_errors(const fcal_solution* solution, const fcal_solution* judged,
                                     const double* bed_xy, int32_t count, double* errors);

// NOLINTEND(modernize-use-using, readability-identifier-naming)

#ifdef __cplusplus
}  // extern "C"
#endif

#if defined(_MSC_VER) || defined(__BORLANDC__)
#pragma pack(pop)
#endif

#endif  // FISHEYE_CALIBRATION_C_H
