# Cross-building for 64-bit ARM Linux with Debian's compiler. scripts/prepare-arm64 provides the libraries.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

# The environment variable passes the result to the small projects with which CMake checks the compiler.
if(NOT DEFINED ENV{FISHEYE_CALIBRATION_ARM64_SYSROOT})
  execute_process(
    COMMAND "${CMAKE_CURRENT_LIST_DIR}/../scripts/prepare-arm64" --sysroot
    OUTPUT_VARIABLE sysroot OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(ENV{FISHEYE_CALIBRATION_ARM64_SYSROOT} "${sysroot}")
endif()
set(CMAKE_SYSROOT "$ENV{FISHEYE_CALIBRATION_ARM64_SYSROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The tests use no window and no picture file. Under the emulator, loading the many libraries behind these
# takes longer than most tests.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,--as-needed")

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L "${CMAKE_SYSROOT}")
