// What the hosts of these tests share. The same sources are compiled by MinGW-w64's compiler and,
// by the rules of Visual C++, by clang; each host writes what the library gives it to a file, and
// the files must be equal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fisheye_calibration.h"

namespace host {

// Results go to this file: the name, the number of bytes and the bytes.
void openResults(const char* path);
void closeResults();
void record(const char* name, const void* bytes, std::size_t count);
void recordText(const char* name, const char* text);
void recordFile(const char* name, const char* path);    // removes the file
void recordDigest(const char* name, const char* path);  // of a larger file
template <class T>
void recordValue(const char* name, const T& value) {
  record(name, &value, sizeof value);
}

// Calls and writes all 21 functions.
void callAllFunctions();

// Runs `call` while a second thread records the text of the message boxes that appear and closes
// them.
void recordMessages(const char* name, void (*call)());

// Runs `call` while a second thread presses a key in the window of the perspective aid; records
// whether it appeared.
void recordWindow(const char* name, void (*call)());

// Numbers that are the same in every host.
class Numbers {
 public:
  explicit Numbers(std::uint32_t seed) : state_(seed) {}
  std::uint32_t next() {
    state_ = state_ * 1664525u + 1013904223u;
    return state_ >> 8;
  }
  float between(float low, float high) {
    return low + (high - low) * static_cast<float>(next() % 65536u) / 65536.0f;
  }

 private:
  std::uint32_t state_;
};

typedef std::vector<CalibrationPoint> Points;

// A camera about 260 mm over the bed, and the points of a target of columns x rows as it sees them.
FishEyeCalibrationParam sampleCamera();
Points targetPoints(int columns, int rows);

}  // namespace host
