// Debug files on drive D:, written by the operations under fixed names; failures are ignored
// (compatibility 56). On systems other than Windows the same paths are relative, in a folder named
// "D:".
#pragma once

namespace fisheye_calibration::images {

// With FISHEYE_CALIBRATION_DEBUG_FILES=OFF the library writes none of them.
constexpr bool kWritesDebugFiles = FISHEYE_CALIBRATION_DEBUG_FILES != 0;

namespace debug_files {
constexpr const char* kAffinePairs = "D:/Affine.txt";
constexpr const char* kLeftView = "D:/LeftCorrectedImage.bmp";
constexpr const char* kLeftMask = "D:/LeftMaskImage.bmp";
constexpr const char* kRightView = "D:/RightCorrectedImage.bmp";
constexpr const char* kRightMask = "D:/RightMaskImage.bmp";
constexpr const char* kCanvas = "D:/DImage.bmp";
constexpr const char* kStraightened = "D:/CorrectedImage2.bmp";
constexpr const char* kToStraighten = "D:/CorrectedImage.bmp";  // read in every build
}  // namespace debug_files

}  // namespace fisheye_calibration::images
