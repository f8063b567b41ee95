#!/usr/bin/env bash
# scripts/clean-environment keeps only settings that do not change what is built.
#   environment.sh SOURCES
set -euo pipefail
said=$(env -i PATH="/elsewhere:$PATH" CC=none CXXFLAGS=-O0 LDFLAGS=-none PYTHONPATH=/none LC_ALL=C TZ=UTC-5 \
  CMAKE_CXX_COMPILER_LAUNCHER=none HOME=/home TMPDIR="/a place" SOURCE_DATE_EPOCH=5 no_proxy= \
  "$1/scripts/clean-environment" env | LC_ALL=C sort)
expected='HOME=/home
PATH=/usr/sbin:/usr/bin:/sbin:/bin
SOURCE_DATE_EPOCH=5
TMPDIR=/a place
no_proxy='
[ "$said" = "$expected" ] || { echo "The command saw: $said" >&2; exit 1; }
