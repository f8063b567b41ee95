// Exceptions of the library as the host catches them.
#include <cstring>
#include <exception>
#include <new>
#include <stdexcept>
#include <typeinfo>

#include "host.h"
#include "runtime.h"

// What std::exception_ptr calls in Visual C++'s runtime. The object itself is two pointers.
#define RUNTIME __declspec(dllimport)
RUNTIME void __ExceptionPtrCreate(void*);
RUNTIME void __ExceptionPtrDestroy(void*);
RUNTIME void __ExceptionPtrCurrentException(void*);
RUNTIME void __ExceptionPtrRethrow(const void*);

namespace {

using host::check;
using host::Points;

int unwound = 0;

struct Unwound {
  ~Unwound() { ++unwound; }
};

// Three points where four are wanted.
void failInTheImageLibrary() {
  const Unwound frame;
  double value = 0;
  GetPerspectiveTransformationParam(Points(3), nullptr, value, value);
}

// A vector over the size from which blocks are over-allocated.
void failWithManyPoints() {
  double value = 0;
  GetPerspectiveTransformationParam(Points(100), nullptr, value, value);
}

void runOutOfMemory() {
  const Unwound frame;
  unsigned char pixel = 1;
  FishEyeCalibrationParam camera = FishEyeCalibrationParam();
  camera.fx = camera.fy = 1;
  SingleCamCorrected(&pixel, 1, 1, 8, camera, &pixel, 50000, 50000, nullptr);
}

bool namesTheCondition(const std::exception& error) {
  return std::strstr(error.what(), "getPerspectiveTransform") != nullptr;
}

enum Caught { kNothing, kBadAlloc, kRuntimeError, kException, kOther };

Caught kindOf(void (*call)()) {
  try {
    call();
    return kNothing;
  } catch (const std::bad_alloc&) {
    return kBadAlloc;
  } catch (const std::runtime_error&) {
    return kRuntimeError;
  } catch (const std::exception&) {
    return kException;
  } catch (...) {
    return kOther;
  }
}

bool isCaughtByReference() {
  try {
    failInTheImageLibrary();
  } catch (const std::exception& error) {
    return namesTheCondition(error);
  } catch (...) {
  }
  return false;
}

bool isCaughtByValue() {
  try {
    failInTheImageLibrary();
  } catch (std::exception error) {
    return namesTheCondition(error);
  } catch (...) {
  }
  return false;
}

void rethrow() {
  try {
    failInTheImageLibrary();
  } catch (const std::exception&) {
    throw;
  }
}

bool isCaughtAgain() {
  try {
    rethrow();
  } catch (const std::runtime_error& error) {
    return namesTheCondition(error);
  }
  return false;
}

bool isARuntimeErrorByCast() {
  try {
    failInTheImageLibrary();
  } catch (const std::exception& error) {
    return dynamic_cast<const std::runtime_error*>(&error) != nullptr &&
           dynamic_cast<const std::bad_alloc*>(&error) == nullptr;
  }
  return false;
}

bool isCaughtWithoutType() {
  try {
    failInTheImageLibrary();
  } catch (...) {
    return true;
  }
  return false;
}

bool isKnownByTypeid() {
  try {
    failInTheImageLibrary();
  } catch (const std::exception& error) {
    return typeid(error) == typeid(std::runtime_error) && typeid(error) != typeid(std::bad_alloc);
  }
  return false;
}

// While another exception is handled.
bool isCaughtInAHandler() {
  try {
    runOutOfMemory();
  } catch (const std::bad_alloc& outer) {
    return isCaughtByReference() && std::strcmp(outer.what(), "bad allocation") == 0;
  }
  return false;
}

// Kept by a std::exception_ptr, thrown again when the first exception is gone.
bool isKeptByAPointer(void (*call)(), Caught kind) {
  void* kept[2];
  __ExceptionPtrCreate(kept);
  try {
    call();
  } catch (...) {
    __ExceptionPtrCurrentException(kept);
  }
  Caught again = kNothing;
  bool hasText = false;
  try {
    __ExceptionPtrRethrow(kept);
  } catch (const std::bad_alloc& error) {
    again = kBadAlloc;
    hasText = std::strcmp(error.what(), "bad allocation") == 0;
  } catch (const std::runtime_error& error) {
    again = kRuntimeError;
    hasText = namesTheCondition(error);
  }
  __ExceptionPtrDestroy(kept);
  return again == kind && hasText;
}

void catchAll() {
  isCaughtByReference();
  isCaughtWithoutType();
  isCaughtInAHandler();
  isKeptByAPointer(failInTheImageLibrary, kRuntimeError);
  isKeptByAPointer(runOutOfMemory, kBadAlloc);
  isCaughtByValue();
  isCaughtAgain();
  kindOf(failWithManyPoints);
  kindOf(runOutOfMemory);
}

}  // namespace

void checkExceptions() {
  check(kindOf(failInTheImageLibrary) == kRuntimeError, "a failure is a std::runtime_error");
  check(unwound == 1, "the host's frames are unwound");
  check(kindOf(runOutOfMemory) == kBadAlloc, "too little memory is a std::bad_alloc");
  check(isCaughtByReference(), "caught as std::exception it has its text");
  check(isCaughtByValue(), "caught by value it has its text");
  check(isCaughtAgain(), "rethrown it has its type and text");
  check(isARuntimeErrorByCast(), "dynamic_cast knows its type");
  check(isKnownByTypeid(), "typeid knows its type");
  check(isCaughtWithoutType(), "catch (...) catches it");
  check(isCaughtInAHandler(), "caught while another is handled it has its text");
  check(isKeptByAPointer(failInTheImageLibrary, kRuntimeError) &&
            isKeptByAPointer(runOutOfMemory, kBadAlloc),
        "std::exception_ptr keeps its type and text");
  host::checkBalance("exceptions leave no memory in use", catchAll);
}
