#!/usr/bin/env bash
# Configures and builds the project: build.sh [BUILD_DIR] [extra cmake args...]
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$top/build}
shift || true
launcher=()
if command -v ccache >/dev/null; then
  # Hits across clones of the project (CI builds a fresh one each time).
  launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  export CCACHE_BASEDIR=$top CCACHE_NOHASHDIR=true
fi
cmake -S "$top" -B "$build" -DCMAKE_BUILD_TYPE=${BUILD_TYPE:-RelWithDebInfo} "${launcher[@]}" "$@" >/dev/null
cmake --build "$build" -j"$(nproc)"
