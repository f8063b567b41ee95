"""Refuses to be imported where the extension module would wait for itself forever."""

import ctypes


def _is_main() -> bool:
    python = ctypes.pythonapi
    this, main = python.PyInterpreterState_Get, python.PyInterpreterState_Main
    this.restype = main.restype = ctypes.c_void_p
    return bool(this() == main())


# pybind11 takes the lock of the main interpreter when a module is loaded, which another interpreter
# of the same process, such as one of mod_wsgi, may hold. NumPy does not support them either.
if not _is_main():
    raise ImportError("fisheye_calibration works in the main interpreter only")
