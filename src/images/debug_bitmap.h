// Bitmap files that show a developer the intermediate images of the stitching.
#pragma once

namespace fisheye_calibration {

// Writes a buffer to a Windows bitmap file, replacing an existing one. `bits` is 1, 4, 8, 24 or 32;
// 1, 4 and 8 get a palette whose entry i is the grey (i, i, i).
//
// The buffer's width x height x bits / 8 bytes are written as one block, although the format pads
// rows to multiples of four bytes: rows of other lengths make the picture look sheared
// (compatibility 57). Zeros fill the file up to the length declared in its headers.
//
// Returns false if the path is null, the buffer is null although it should hold bytes, the file
// would exceed 2^31 - 1 bytes (nothing is created then), or it cannot be opened or written. If a
// size is not positive, the file holds the headers and the palette only.
bool WriteDebugBitmap(const unsigned char* pixels, int width, int height, int bits,
                      const char* path);

// Whether WriteDebugBitmap could open the path for writing. An existing file keeps its contents,
// and no new file is left behind.
bool CanWriteDebugBitmap(const char* path);

}  // namespace fisheye_calibration
