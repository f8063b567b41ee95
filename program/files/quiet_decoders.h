// Keeps the decoders of videos from printing messages of their own, which name no file.
#pragma once

namespace fisheye_calibration::program {

// Takes effect if it is called before the first video is opened or written, and then for the whole
// process. A level that the user has set in OPENCV_FFMPEG_LOGLEVEL stays.
void quietDecoders();

}  // namespace fisheye_calibration::program
