// The files on drive D: that show a developer what the library worked on (compatibility 56). They
// are written under fixed names, as part of the operations, and whether that succeeds is ignored.
// Off Windows the paths are used as they stand: relative ones, in a folder called "D:".
#pragma once

namespace fisheye_calibration::images {

// Built with FISHEYE_CALIBRATION_DEBUG_FILES=OFF the library writes none.
constexpr bool kWritesDebugFiles = FISHEYE_CALIBRATION_DEBUG_FILES != 0;

namespace debug_files {
constexpr const char* kAffinePairs = "D:/Affine.txt";
constexpr const char* kLeftView = "D:/LeftCorrectedImage.bmp";
constexpr const char* kLeftMask = "D:/LeftMaskImage.bmp";
constexpr const char* kRightView = "D:/RightCorrectedImage.bmp";
constexpr const char* kRightMask = "D:/RightMaskImage.bmp";
constexpr const char* kCanvas = "D:/DImage.bmp";
constexpr const char* kStraightened = "D:/CorrectedImage2.bmp";
constexpr const char* kToStraighten = "D:/CorrectedImage.bmp";  // read, whatever is built in
}  // namespace debug_files

}  // namespace fisheye_calibration::images
