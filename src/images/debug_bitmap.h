// Bitmap files that show a developer what the stitching worked on.
#pragma once

namespace fisheye_calibration {

// Writes a buffer to a Windows bitmap file, replacing what was there. `bits` is 1, 4, 8, 24 or 32;
// 1, 4 and 8 get a palette whose entry i is the grey (i, i, i).
//
// The buffer's width x height x bits / 8 bytes go into the file in one piece, although a bitmap's
// rows take multiples of four bytes: where a row's length is none, the picture looks sheared.
// Zeros follow up to the length that the headers declare.
//
// False when the file cannot be opened or written, and for a null path or a null buffer with bytes
// to write. Sizes that are not positive give headers and palette alone; a file that would be longer
// than 2^31 - 1 bytes is not begun.
bool WriteDebugBitmap(const unsigned char* pixels, int width, int height, int bits,
                      const char* path);

// Whether that function could open the path for writing. A file that is there keeps its contents,
// and none is left behind where none was.
bool CanWriteDebugBitmap(const char* path);

}  // namespace fisheye_calibration
