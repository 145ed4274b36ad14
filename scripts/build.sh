#!/usr/bin/env bash
# Configures and builds the project: build.sh [BUILD_DIR] [extra cmake args...]
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$top/build}
shift || true
cmake -S "$top" -B "$build" -DCMAKE_BUILD_TYPE=${BUILD_TYPE:-RelWithDebInfo} "$@" >/dev/null
cmake --build "$build" -j"$(nproc)"
