"""Interpreters besides the main one."""

from __future__ import annotations

import subprocess
import sys

import pytest


def test_subinterpreters_are_refused_at_once() -> None:
    code = (
        "try:\n"
        "    import _interpreters as interpreters\n"
        "    one = interpreters.create('legacy')\n"
        "except ImportError:\n"
        "    import _xxsubinterpreters as interpreters\n"
        "    one = interpreters.create()\n"
        "print(interpreters.run_string(one, '''\n"
        "import warnings\n"
        "try:\n"
        "    import fisheye_calibration\n"
        "except ImportError as error:\n"
        "    print('refused:', error, flush=True)\n"
        "'''))\n"
    )
    command = [sys.executable, "-c", code]
    done = subprocess.run(command, capture_output=True, text=True, check=False, timeout=120)
    if "ModuleNotFoundError: No module named '_xxsub" in done.stderr:
        pytest.skip("no module for subinterpreters")
    assert "refused: fisheye_calibration works in the main interpreter only" in done.stdout, done
