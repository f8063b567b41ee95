// fisheye_calibration: turns the fisheye camera (or two cameras) over a work bed into a measuring
// instrument. This header is the whole C++ interface: three plain records and 21 functions. It
// needs only a C++11 compiler and the standard library. `compatibility N` marks behaviour that
// existing hosts depend on (docs/compatibility.md). fisheye_calibration_c.h is the same library's C
// interface.
//
// Frames (drawn in docs/conventions.md)
//   world            the work bed, plane Z = 0, in the host's world unit (usually millimetres)
//   raw image        the camera's own, distorted pixels
//   corrected image  the ideal pinhole view with the camera's focal lengths, its principal point at
//                    the centre (W/2, H/2) of an image of W x H pixels
//   second-corrected image   the corrected image mapped by the homography p1...p9 and shifted by
//                    (ImageDx, ImageDy): axis-aligned, `Pixel` world units per pixel, its centre at
//                    world (DatumPtXw, DatumPtYw)
// The origin of pixel coordinates is the centre of the top-left pixel; x points right, y down.
//
// Image buffers
//   An image is a pointer, a width, a height (pixels) and a bit count: 8 (grey), 24 (three bytes
//   per pixel) or 32 (four; the order of a pixel's bytes is the host's and is kept). Rows are
//   stored bottom-up without padding (compatibility 3): the stride is width x bytes per pixel, and
//   picture row y is buffer row height - 1 - y. The caller owns every buffer.
//
// Calls keep no state and may run concurrently on different data. They share only the debug files
// with fixed names on drive D: (compatibility 56; listed with each function; off Windows the paths
// are used verbatim, so nothing is written unless the working directory contains a directory named
// "D:"), the C runtime's rand() and the window of GetPerspectiveTransformationParam.
//
// Functions report failure through their bool result; each comment says which outputs a failed call
// leaves untouched. Functions whose comment says so may throw the image library's exception
// (cv::Exception) on degenerate input.
//
// Calibrations agree between machines to rounding, not bit for bit. Pictures and conversions are
// bit-identical on every machine and with every version of the image library: they are those of
// OpenCV 4.9. The exception is the C library's arctangent: where its last bit differs (even one C
// library may differ by processor), about one pixel in 10^11 may be sampled 1/32 pixel off.
#ifndef FISHEYE_CALIBRATION_H
#define FISHEYE_CALIBRATION_H

#include <cstddef>
#include <cstdint>
#include <vector>

#if defined(FISHEYE_CALIBRATION_STATIC)
#define FISHEYE_CALIBRATION_API
#elif defined(_WIN32)
#if defined(FISHEYE_CALIBRATION_BUILDING)
#define FISHEYE_CALIBRATION_API __declspec(dllexport)
#else
#define FISHEYE_CALIBRATION_API __declspec(dllimport)
#endif
#else
#define FISHEYE_CALIBRATION_API __attribute__((visibility("default")))
#endif

// Width or height of an image: 32-bit signed everywhere. On Windows it is `long`, because hosts
// bind to the decorated names, where `long` and `int` differ (compatibility 2).
#if defined(_WIN32)
typedef long ImageLong;
#else
typedef std::int32_t ImageLong;
#endif

// ---------------------------------------------------------------------------------------------
// Records. Plain memory with natural alignment; the layout is part of the interface
// (compatibility 1). They may hold NaN, infinities or zeros; the formulas are then evaluated as
// they stand.
// ---------------------------------------------------------------------------------------------

// One point of the planar calibration target. Fields from ReprojPtX on are outputs of
// SingleCamCalibration. The Reserved fields are never interpreted and survive every call
// (compatibility 4).
struct CalibrationPoint {
  std::int32_t PointId;  // number on the target, from 1; identifies the point in both cameras
  std::int32_t Reserved1;
  std::int32_t Reserved2;
  float Xw;  // world X on the work plane, world units
  float Yw;  // world Y
  std::int32_t Reserved3;
  float ImagePtX;     // measured x in the raw image, pixels
  float ImagePtY;     // measured y
  double ReprojPtX;   // x of the point projected with the solved camera, pixels
  double ReprojPtY;   // y
  double ReprojErrX;  // ImagePtX - ReprojPtX (computed in 32-bit float), pixels
  double ReprojErrY;  // ImagePtY - ReprojPtY
};

// One calibrated camera and its work plane. In formulas: K = [fx skewness u0; 0 fy v0; 0 0 1],
// D = (k0, k1), R = R1...R9 row by row, T = (Tx, Ty, Tz), H = p1...p9 row by row.
struct FishEyeCalibrationParam {
  float u0;  // principal point, pixels of the raw image
  float v0;
  float fx;  // focal lengths, pixels
  float fy;
  float skewness;  // K(0,1), also the skew argument of the projection; solved cameras: 0
  double k0;       // distortion: theta_d = theta + k0 theta^2 + k1 theta^3
  double k1;
  double k2;  // k2...k5 are filler that only the parameter file keeps (compatibility 14)
  double k3;
  double k4;
  double k5;
  float R1;  // rotation from the world frame to the camera frame, row by row
  float R2;
  float R3;
  float R4;
  float R5;
  float R6;
  float R7;
  float R8;
  float R9;
  float Rx;  // the same as a rotation vector, radians; projections read this one (compatibility 25)
  float Ry;
  float Rz;
  float Tx;  // translation from the world frame to the camera frame, world units
  float Ty;
  float Tz;
  double p1;  // homography: corrected image -> second-corrected image, row by row
  double p2;
  double p3;
  double p4;
  double p5;
  double p6;
  double p7;
  double p8;
  double p9;
  float Pixel;      // world units per pixel of the second-corrected image
  float DatumPtXw;  // world point at the centre of the second-corrected image
  float DatumPtYw;
  float ImageDx;  // shift added after the homography, pixels
  float ImageDy;
};

// Scale, size and datum of a stitched two-camera image.
struct DualFishEyeCalibrationParam {
  float Pixel;                 // world units per pixel
  std::int32_t StdImageWidth;  // size of the stitched image, pixels
  std::int32_t StdImageHeight;
  std::int32_t DatumImagePtX;  // pixel of the datum point; Y is a buffer row, counted from the
  std::int32_t DatumImagePtY;  // bottom row of the picture (compatibility 29)
  float DatumPtXw;             // world coordinates of the datum point
  float DatumPtYw;
};

// ---------------------------------------------------------------------------------------------
// Single-camera calibration
// ---------------------------------------------------------------------------------------------

// Calibrates one fisheye camera from one view of a planar target: intrinsics, pose of the work
// plane and the second correction, by Gauss-Newton on the reprojection error.
//
//   image, bitCount  accepted but not used (compatibility 15); image may be null
//   width, height    size of the raw image, pixels; the solver starts from focal length
//                    max(width, height)/pi and the image centre
//   points           at least 9 points in any order; PointId is not read. The four Reproj fields of
//                    every element are written, nothing else changes. The first and last points
//                    fix the scale `Pixel` (compatibility 16): choose them far apart.
//   correctedWidth, correctedHeight
//                    size of the corrected image that will be rendered later, pixels
//   param            filled field by field; k2...k5 receive filler from the C runtime's rand()
//   reprojectionError
//                    sqrt(sum(du^2 + dv^2) / n), raw-image pixels
//
// Returns true if everything was filled, false
//   - for fewer than 9 points, after the message "特征点少于9个点，无法完成标定！" (a modal box on
//     Windows, a line on standard error elsewhere); nothing is written (compatibility 13);
//   - if no second-correction homography is found: intrinsics, pose, filler, reprojection fields
//     and reprojectionError are written; p1...p9, Pixel, DatumPtXw/Yw and ImageDx/Dy are not
//     (compatibility 17).
// Point sets that determine no camera, such as collinear ones, return false or throw cv::Exception.
//
// A true result does not guarantee a good fit. A point farther than max(width, height)/2 from the
// image centre makes the solver diverge; so can points beyond about 0.95 of that radius, or a small
// or frontal target. Check reprojectionError.
FISHEYE_CALIBRATION_API bool SingleCamCalibration(
    unsigned char* image, ImageLong width, ImageLong height, int bitCount,
    std::vector<CalibrationPoint>& points, ImageLong correctedWidth, ImageLong correctedHeight,
    FishEyeCalibrationParam& param, double& reprojectionError);

// ---------------------------------------------------------------------------------------------
// Parameter files (INI, one section, one key per field)
// ---------------------------------------------------------------------------------------------

// Writes section "CalibraionParam" (compatibility 6) of the file at `path`: 32-bit fields with six
// decimals, 64-bit fields with fifteen. Existing keys are rewritten in place, everything else in
// the file stays, and a missing file is created. Always returns true (compatibility 7): a missing
// folder or a read-only file leaves the disk unchanged. Off Windows the file is replaced as a whole
// or not at all. A null path does nothing. Numbers are written with '.' in every locale.
FISHEYE_CALIBRATION_API bool SaveCalibrationParam(const char* path, FishEyeCalibrationParam param);

// Reads that section into every field of `param`. A field is 0 if its file, section or key is
// missing (compatibility 12) or its text is not a number; a number followed by other text gives the
// number; values are truncated to 127 characters (compatibility 11). k0...k5 are read in 32-bit
// precision, p1...p9 in 64-bit (compatibility 9). Always returns true. A null path counts as a
// missing file.
FISHEYE_CALIBRATION_API bool LoadCalibrationParam(const char* path, FishEyeCalibrationParam& param);

// The same for section "DualCamerasCalibraionParam". Always returns true.
FISHEYE_CALIBRATION_API bool SaveDualCamerasCalibrationParam(const char* path,
                                                             DualFishEyeCalibrationParam param);

// The datum's world coordinates are written with six decimals but read as integers, truncated
// toward zero (compatibility 10). Always returns true.
FISHEYE_CALIBRATION_API bool LoadDualCamerasCalibrationParam(const char* path,
                                                             DualFishEyeCalibrationParam& param);

// ---------------------------------------------------------------------------------------------
// Corrected image
// ---------------------------------------------------------------------------------------------

// Renders the second-corrected view of a raw frame.
//
//   src, srcWidth, srcHeight, bitCount   the raw frame, 8, 24 or 32 bits
//   dst, dstWidth, dstHeight             receives the view, same bit count, of the size given to
//                                        SingleCamCalibration: at another size the picture is
//                                        distorted and the mapping of points does not hold
//   mask                                 null, or dstWidth x dstHeight bytes: 0 where the pixel
//                                        shows image content, 255 elsewhere (compatibility 30)
//
// dst and mask may overlap src but not each other. Throws std::bad_alloc for buffers over 2^31 - 1
// bytes. Returns false and writes nothing for null buffers, an empty source, a non-positive size of
// dst, any other bit count, or a frame that is entirely black once the distortion is removed
// (compatibility 34). A singular homography puts every pixel outside (image 0, mask 255) and
// returns true (compatibility 35).
FISHEYE_CALIBRATION_API bool SingleCamCorrected(unsigned char* src, ImageLong srcWidth,
                                                ImageLong srcHeight, int bitCount,
                                                FishEyeCalibrationParam param, unsigned char* dst,
                                                ImageLong dstWidth, ImageLong dstHeight,
                                                unsigned char* mask);

// ---------------------------------------------------------------------------------------------
// Point mapping. (cx, cy) is half the width and height of the corrected image. These functions do
// not check their input and always return true.
// ---------------------------------------------------------------------------------------------

// Returns true and leaves x and y unchanged (compatibility 23).
FISHEYE_CALIBRATION_API bool RawImageToCorrectedImagePoint(float rawX, float rawY,
                                                           FishEyeCalibrationParam param, float& x,
                                                           float& y);

// World point -> raw image by the fisheye model: Y = R X + T, r = |(Y1, Y2)/Y3|, theta = atan r,
// theta_d = theta + k0 theta^2 + k1 theta^3, pixel = K (theta_d/r) (Y1, Y2)/Y3. The rotation is
// taken from (Rx, Ry, Rz) (compatibility 25). A depth of 0 counts as 1 and points behind the camera
// are not rejected (compatibility 26).
FISHEYE_CALIBRATION_API bool WorldToRawImagePoint(float Xw, float Yw, float Zw,
                                                  FishEyeCalibrationParam param, float& x,
                                                  float& y);

// World point -> corrected image: the same pose without distortion, principal point at (cx, cy).
FISHEYE_CALIBRATION_API bool WorldToCorrectedImagePoint(float Xw, float Yw, float Zw,
                                                        FishEyeCalibrationParam param, float cx,
                                                        float cy, float& x, float& y);

// World plane -> second-corrected image: x = (Xw - DatumPtXw)/Pixel + cx, y likewise, in 32-bit
// float (compatibility 27). Zw is ignored. A Pixel of 0 gives infinities or NaN.
FISHEYE_CALIBRATION_API bool WorldToSecondCorrectedImagePoint(float Xw, float Yw, float Zw,
                                                              FishEyeCalibrationParam param,
                                                              float cx, float cy, float& x,
                                                              float& y);

// Returns true and leaves Xw, Yw and Zw unchanged (compatibility 23).
FISHEYE_CALIBRATION_API bool RawImageToWorldPoint(float rawX, float rawY,
                                                  FishEyeCalibrationParam param, float& Xw,
                                                  float& Yw, float& Zw);

// Second-corrected image (despite the name, compatibility 24) -> world plane:
// Xw = (x - cx) Pixel + DatumPtXw, Yw likewise, in 32-bit float. Zw is left unchanged.
FISHEYE_CALIBRATION_API bool CorrectedImageToWorldPoint(float x, float y, float cx, float cy,
                                                        FishEyeCalibrationParam param, float& Xw,
                                                        float& Yw, float& Zw);

// ---------------------------------------------------------------------------------------------
// Cropping
// ---------------------------------------------------------------------------------------------

// Copies the centred dstWidth x dstHeight rectangle of src to dst, buffer row by buffer row, at
// offset trunc(srcSize/2 + 0.5) - trunc(dstSize/2 + 0.5) (compatibility 41). Pixels of dst without
// a source keep their value. Nothing is copied for other bit counts, null buffers or non-positive
// sizes.
FISHEYE_CALIBRATION_API void CroppingImage(unsigned char* src, ImageLong srcWidth,
                                           ImageLong srcHeight, int bitCount, unsigned char* dst,
                                           ImageLong dstWidth, ImageLong dstHeight);

// ---------------------------------------------------------------------------------------------
// Plane registration
// ---------------------------------------------------------------------------------------------

// Least-squares affine map from raw-image pixels to the world plane: Xw = a x + b y + e and
// Yw = c x + d y + f. `params` receives a, b, c, d, e, f (six doubles). errorX and errorY, world
// units, are sqrt(s/n), where s sums the squared residuals of the first nine points only and n
// counts all points (compatibility 42): pass exactly nine points for a plain RMS. Writes the pairs
// to "D:/Affine.txt". Returns false, with outputs untouched and no file written, for fewer than
// three points or a null `params`. Fewer than nine points are all summed. Collinear points have no
// unique solution, which is not reported (compatibility 43).
FISHEYE_CALIBRATION_API bool HandEyeCalibration(std::vector<CalibrationPoint> points,
                                                double* const params, double& errorX,
                                                double& errorY);

// Setup aid: rectifies "D:/CorrectedImage.bmp" by the perspective transform of exactly four points
// (points 0 and 3 form a diagonal), shows it in a window, waits for a key or until the window is
// closed, and writes "D:/CorrectedImage2.bmp" (5184 x 5184). params, value1 and value2 are never
// written (compatibility 44). Returns false for an empty list; throws cv::Exception for any other
// number of points than four (code -215), a missing input picture, or if no window can be opened.
// Call it on a thread that may own windows. Built with FISHEYE_CALIBRATION_INTERACTIVE=OFF it
// neither opens a window nor waits.
FISHEYE_CALIBRATION_API bool GetPerspectiveTransformationParam(std::vector<CalibrationPoint> points,
                                                               double* const params, double& value1,
                                                               double& value2);

// ---------------------------------------------------------------------------------------------
// Two cameras
// ---------------------------------------------------------------------------------------------

// Appends to firstCommon and secondCommon copies of the points whose PointId occurs exactly twice
// in the two lists together, in ascending order of id. An id that occurs twice in one list counts
// too (compatibility 46). The outputs are not cleared (compatibility 47). idCount < 1 does nothing;
// ids outside 1...idCount are skipped.
FISHEYE_CALIBRATION_API void GetCommonPoints(std::vector<CalibrationPoint> first,
                                             std::vector<CalibrationPoint> second, int idCount,
                                             std::vector<CalibrationPoint>& firstCommon,
                                             std::vector<CalibrationPoint>& secondCommon);

// Size of the canvas that FishEyeImageStitching needs: width and height multiples of 4, and the
// first image's bit count. World coordinates are expected within 0...10000 (compatibility 48).
// Writes the corrected images and masks as "D:/LeftCorrectedImage.bmp", "D:/LeftMaskImage.bmp" and
// likewise for Right. Returns false, with width and height untouched, if the lists share no point
// or do not pair (one camera has more of the common points than the other), else true; the bit
// count is set in either case. Corners that the transform maps to NaN are left out; sizes beyond 32
// bits become 2147483644. Throws std::bad_alloc if a doubled view or mask takes more than 2^31 - 1
// bytes.
FISHEYE_CALIBRATION_API bool ComputeStitchedImageSize(
    unsigned char* image1, ImageLong width1, ImageLong height1, int bits1,
    FishEyeCalibrationParam param1, std::vector<CalibrationPoint> points1, unsigned char* image2,
    ImageLong width2, ImageLong height2, int bits2, FishEyeCalibrationParam param2,
    std::vector<CalibrationPoint> points2, ImageLong& stitchedWidth, ImageLong& stitchedHeight,
    int& stitchedBits);

// Corrects both frames at twice their size, aligns the second to the first and blends them into
// `stitched`; fills `dual`. Both cameras must have been calibrated for a corrected image of twice
// their frame's size: with other records the stitched content is many pixels away from where the
// mapping of points puts it, which the library cannot notice. Canvas pixels that neither camera
// covers keep their value (compatibility 53). stitchedBits must be 8, 24 or 32 and equal bits1 and
// bits2, else no pixel is written (compatibility 54). Also writes the debug files of
// ComputeStitchedImageSize and "D:/DImage.bmp". Returns false, with canvas and record untouched, if
// the lists share no point or do not pair, else true. A camera whose frame cannot be corrected
// contributes nothing; nor does the second camera where the transform gives NaN or a value beyond
// 32 bits. With a null canvas only the record is filled. Throws std::bad_alloc as
// ComputeStitchedImageSize does.
FISHEYE_CALIBRATION_API bool FishEyeImageStitching(
    unsigned char* image1, ImageLong width1, ImageLong height1, int bits1,
    FishEyeCalibrationParam param1, std::vector<CalibrationPoint> points1, unsigned char* image2,
    ImageLong width2, ImageLong height2, int bits2, FishEyeCalibrationParam param2,
    std::vector<CalibrationPoint> points2, unsigned char* stitched, ImageLong stitchedWidth,
    ImageLong stitchedHeight, int stitchedBits, DualFishEyeCalibrationParam& dual);

// Crops a stitched image to the dstWidth x dstHeight pixels whose top-left picture pixel is
// (cropLeft, cropTop) and updates `dual` to match. Both sizes must be multiples of 4, else the
// message "裁剪后图像的长和宽必须是4的整数倍！" is shown and nothing changes. Pixels without a
// source keep their value; other bit counts and heights below 1 copy nothing but update `dual`
// (compatibility 55). If there are pixels to copy and a buffer is null, nothing changes.
FISHEYE_CALIBRATION_API void DualCam_CroppingImage(unsigned char* src, ImageLong srcWidth,
                                                   ImageLong srcHeight, int bitCount, int cropLeft,
                                                   int cropTop, DualFishEyeCalibrationParam& dual,
                                                   unsigned char* dst, ImageLong dstWidth,
                                                   ImageLong dstHeight);

// World -> stitched image: u = (Xw - DatumPtXw)/Pixel + DatumImagePtX, v likewise, in 32-bit float;
// v is measured from the buffer row DatumImagePtY but grows with the picture's rows, so the picture
// shows the point at buffer row 2 DatumImagePtY - 1 - v; on an uncropped canvas of even height that
// is picture row v (compatibility 29, docs/conventions.md). Content from the second camera lies
// there only if both frames have the same size. Zw is ignored. Always returns true.
FISHEYE_CALIBRATION_API bool DualCam_WorldToSecondCorrectedImagePoint(
    float Xw, float Yw, float Zw, DualFishEyeCalibrationParam dual, float& u, float& v);

// Stitched image -> world, the inverse: for the content of a buffer row pass
// v = 2 DatumImagePtY - 1 - row. Sets Xw and Yw and leaves Zw unchanged. Always returns false:
// existing hosts depend on it (compatibility 28).
FISHEYE_CALIBRATION_API bool DualCam_CorrectedImageToWorldPoint(float u, float v,
                                                                DualFishEyeCalibrationParam dual,
                                                                float& Xw, float& Yw, float& Zw);

// ---------------------------------------------------------------------------------------------
// Layout that hosts rely on
// ---------------------------------------------------------------------------------------------

#define FISHEYE_CALIBRATION_OFFSET(record, field, bytes) \
  static_assert(offsetof(record, field) == (bytes),      \
                #record "::" #field " is not where hosts expect it")

static_assert(sizeof(ImageLong) == 4, "widths and heights are 32-bit");
static_assert(sizeof(CalibrationPoint) == 64, "CalibrationPoint is 64 bytes");
FISHEYE_CALIBRATION_OFFSET(CalibrationPoint, PointId, 0);
FISHEYE_CALIBRATION_OFFSET(CalibrationPoint, Reserved1, 4);
FISHEYE_CALIBRATION_OFFSET(CalibrationPoint, Reserved2, 8);
FISHEYE_CALIBRATION_OFFSET(CalibrationPoint, Xw, 12);
FISHEYE_CALIBRATION_OFFSET(CalibrationPoint, Yw, 16);
FISHEYE_CALIBRATION_OFFSET(CalibrationPoint, Reserved3, 20);
FISHEYE_CALIBRATION_OFFSET(CalibrationPoint, ImagePtX, 24);
FISHEYE_CALIBRATION_OFFSET(CalibrationPoint, ImagePtY, 28);
FISHEYE_CALIBRATION_OFFSET(CalibrationPoint, ReprojPtX, 32);
FISHEYE_CALIBRATION_OFFSET(CalibrationPoint, ReprojPtY, 40);
FISHEYE_CALIBRATION_OFFSET(CalibrationPoint, ReprojErrX, 48);
FISHEYE_CALIBRATION_OFFSET(CalibrationPoint, ReprojErrY, 56);

static_assert(sizeof(FishEyeCalibrationParam) == 232, "FishEyeCalibrationParam is 232 bytes");
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, u0, 0);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, v0, 4);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, fx, 8);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, fy, 12);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, skewness, 16);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, k0, 24);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, k1, 32);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, k2, 40);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, k3, 48);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, k4, 56);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, k5, 64);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, R1, 72);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, R2, 76);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, R3, 80);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, R4, 84);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, R5, 88);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, R6, 92);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, R7, 96);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, R8, 100);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, R9, 104);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, Rx, 108);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, Ry, 112);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, Rz, 116);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, Tx, 120);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, Ty, 124);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, Tz, 128);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, p1, 136);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, p2, 144);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, p3, 152);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, p4, 160);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, p5, 168);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, p6, 176);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, p7, 184);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, p8, 192);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, p9, 200);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, Pixel, 208);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, DatumPtXw, 212);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, DatumPtYw, 216);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, ImageDx, 220);
FISHEYE_CALIBRATION_OFFSET(FishEyeCalibrationParam, ImageDy, 224);

static_assert(sizeof(DualFishEyeCalibrationParam) == 28, "DualFishEyeCalibrationParam is 28 bytes");
FISHEYE_CALIBRATION_OFFSET(DualFishEyeCalibrationParam, Pixel, 0);
FISHEYE_CALIBRATION_OFFSET(DualFishEyeCalibrationParam, StdImageWidth, 4);
FISHEYE_CALIBRATION_OFFSET(DualFishEyeCalibrationParam, StdImageHeight, 8);
FISHEYE_CALIBRATION_OFFSET(DualFishEyeCalibrationParam, DatumImagePtX, 12);
FISHEYE_CALIBRATION_OFFSET(DualFishEyeCalibrationParam, DatumImagePtY, 16);
FISHEYE_CALIBRATION_OFFSET(DualFishEyeCalibrationParam, DatumPtXw, 20);
FISHEYE_CALIBRATION_OFFSET(DualFishEyeCalibrationParam, DatumPtYw, 24);

#undef FISHEYE_CALIBRATION_OFFSET

#endif  // FISHEYE_CALIBRATION_H
