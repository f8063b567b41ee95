#!/usr/bin/env bash
# scripts/clean-environment keeps only settings that do not change what is built; scripts/build-packages runs in it.
#   environment.sh SOURCES VERSION FOLDER
set -euo pipefail
fail() { echo "$*" >&2; exit 1; }
said=$(env -i PATH="/elsewhere:$PATH" CC=none CXXFLAGS=-O0 LDFLAGS=-none PYTHONPATH=/none LC_ALL=C TZ=UTC-5 \
  CMAKE_CXX_COMPILER_LAUNCHER=none HOME=/home TMPDIR="/a place" SOURCE_DATE_EPOCH=5 no_proxy= \
  "$1/scripts/clean-environment" env | LC_ALL=C sort)
expected='HOME=/home
PATH=/usr/sbin:/usr/bin:/sbin:/bin
SOURCE_DATE_EPOCH=5
TMPDIR=/a place
no_proxy='
[ "$said" = "$expected" ] || fail "The command saw: $said"

# Packages are built in that environment, with a compiler cache.
mkdir -p "$3/scripts"
cp "$1/scripts/build-packages" "$3/scripts"
# shellcheck disable=SC2016 # for the script
printf '#!/bin/sh\necho "clean: $*"\n' >"$3/scripts/clean-environment"
chmod +x "$3/scripts/clean-environment"
said=$(env -i PATH="$PATH" CXXFLAGS=-O0 CCACHE_DIR=/kept CMAKE_CXX_COMPILER_LAUNCHER=ccache \
  "$3/scripts/build-packages" "$3/packages")
expected="clean: env FISHEYE_CALIBRATION_CLEAN_ENVIRONMENT=yes CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_DIR=/kept"
[ "$said" = "$expected $3/scripts/build-packages $3/packages" ] || fail "build-packages runs: $said"
